// The items by name: one row each.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace ctl {

enum class ItemFamily { kConfig, kNetwork, kText };
enum class ItemForm { kNumber, kSwitch, kAddress, kText };

// Where a changed value is kept.
enum class Keeping {
  kSaved,        // the change saves it
  kSavedLater,   // the next save of anything writes it
  kUntilRebuilt  // the configuration file has no line for it
};

struct ItemRow {
  const char* name;
  ItemFamily family;
  int id;
  ItemForm form;
  const char* unit;   // empty where there is none
  const char* range;  // empty where the item cannot be set; may name minRate and minMtu, which are the store's
  Keeping keeping = Keeping::kUntilRebuilt;
};

std::span<const ItemRow> itemRows();
const ItemRow* findItem(const std::string& name);

// What the item takes in the attached store, with numbers for what its row names.
std::string rangeText(const ItemRow& row);

}  // namespace ctl
