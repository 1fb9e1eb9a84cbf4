// SPDX-License-Identifier: Apache-2.0
// The items by name: one row each, from the table that the library's setters are made from.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "tools/ctl/item_range.h"
#include "tools/ctl/vocabulary.h"

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
  const char* code;   // of codes.h
  const char* field;  // of the configuration record
  ItemFamily family;
  int id;
  const char* name = nullptr;  // the field's where the row gives no other
  int synonym = 0;             // a second id of a network item
  ItemForm form = ItemForm::kNumber;
  ItemRange range = {};   // empty where the item cannot be set; may name minRate and minMtu, which are the store's
  const char* unit = "";  // empty where there is none
  bool noHoles = false;   // refuses the mask 0 and masks with holes
  const char* present = "";
  // What a change does; the texts are empty where there is nothing to say.
  int onEvent = 0;
  int offEvent = 0;
  bool saves = false;
  uint32_t bit = 0;
  bool dropsWanArp = false;
  uint32_t pbrBit = 0;
  int modeEvent = 0;
  const char* action = "";
  bool actionSaves = false;
  const char* keyword = "";   // of its line in a saved configuration file
  const char* script = "";    // of its line in a saved script: "rateLimit WAN"
  uint32_t scriptFactor = 1;  // what one of the script's units is in units of the item
  const char* scriptUnit = "";
  Vocabulary scriptWords = {};  // where the script names values
  const char* remark = "";
  Keeping keeping = Keeping::kUntilRebuilt;  // follows from the rest
};

std::span<const ItemRow> itemRows();
const ItemRow* findItemRow(const std::string& name);
const ItemRow* findKeywordRow(const std::string& keyword);

// What the item takes in the attached store, with numbers for what its row names.
std::string rangeText(const ItemRow& row);

}  // namespace ctl
