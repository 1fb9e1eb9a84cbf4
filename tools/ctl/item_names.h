// The items by name: one row each.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace ctl {

enum class ItemFamily { kConfig, kNetwork, kText };
enum class ItemForm { kNumber, kSwitch, kAddress, kText };

struct ItemRow {
  const char* name;
  ItemFamily family;
  int id;
  ItemForm form;
  const char* unit;   // empty where there is none
  const char* range;  // empty where the item cannot be set
};

std::span<const ItemRow> itemRows();
const ItemRow* findItem(const std::string& name);

}  // namespace ctl
