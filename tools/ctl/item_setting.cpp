// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/item_setting.h"

#include "kestrove/kestrove.h"
#include "tools/ctl/change.h"

namespace ctl {
namespace {

const char* unsavedBecause(Keeping keeping) {
  switch (keeping) {
    case Keeping::kSaved: return "";
    case Keeping::kSavedLater: return "the next save of anything writes it";
    case Keeping::kUntilRebuilt: return "the configuration file has no line for it";
  }
  return "";
}

// A save that failed comes as a failure of the whole: the store then holds the new value.
void makeChange(const Session& session, Change& change, const ItemWish& wish) {
  const bool mayBeStored = wish.row->form != ItemForm::kText;
  change.made(storeWish(session, wish), acceptedText(*wish.row),
              [&] { return mayBeStored && itemWord(*wish.row) == wish.word; });
}

bool holds(const ItemWish& wish) {
  return wish.row->form == ItemForm::kText ? itemText(*wish.row) == wish.text : itemWord(*wish.row) == wish.word;
}

// The same in the words of a saved script and of the configuration file.
void addOtherWords(const ItemRow& row, Json& changed) {
  if (row.form == ItemForm::kText) return;
  const uint32_t word = itemWord(row);
  const std::string own = itemPhrase(row, Tongue::kItem, word, shm->config.productId);
  const std::string script = itemPhrase(row, Tongue::kScript, word, shm->config.productId);
  const std::string file = itemPhrase(row, Tongue::kFile, word, shm->config.productId);
  if (!script.empty() && script != own) changed["script"] = script;
  if (!file.empty()) changed["file"] = file;
}

}  // namespace

std::string itemText(const ItemRow& row) {
  char buffer[257] = {};  // a text of 256 characters comes without a terminator
  accept(getShmString(row.id, buffer, 256), row.name);
  return buffer;
}

uint32_t itemWord(const ItemRow& row) {
  uint32_t value = 0;
  accept(
      row.family == ItemFamily::kConfig ? getKestroveConfigItem(row.id, &value) : getNetworkConfigItem(row.id, &value),
      row.name);
  return value;
}

Json itemValue(const ItemRow& row) {
  switch (row.form) {
    case ItemForm::kText: return itemText(row);
    case ItemForm::kAddress: return addressText(itemWord(row));
    case ItemForm::kSwitch: return switchText(itemWord(row));
    case ItemForm::kNumber: return itemWord(row);
  }
  return nullptr;
}

ItemWish itemWish(const NamedItem& item, const std::string& value) {
  const ItemRow& row = *item.row;
  if (!*row.range) {
    throw Refusal(kRefused, std::string(row.name) + ": " + shm_strerror(SHM_EREADONLY), SHM_EREADONLY);
  }
  if (row.form == ItemForm::kText) return {.row = &row, .word = 0, .text = value};
  return {.row = &row, .word = itemWordOf(row, item.tongue, value), .text = {}};
}

int storeWish(const Session& session, const ItemWish& wish) {
  const ItemRow& row = *wish.row;
  switch (row.family) {
    case ItemFamily::kText: return setShmString(row.id, wish.text.c_str());
    case ItemFamily::kConfig: return setKestroveConfigItem(row.id, wish.word, session.source, session.userName());
    case ItemFamily::kNetwork: return setNetworkConfigItem(row.id, &wish.word, session.source, session.userName());
  }
  return -1;
}

void setItem(const Session& session, const NamedItem& item, const std::string& value) {
  const ItemRow& row = *item.row;
  requireStore(session);
  const ItemWish wish = itemWish(item, value);
  Change change(session);
  const Json before = itemValue(row);
  if (!session.leavesEqual || !holds(wish)) makeChange(session, change, wish);
  Json changed = {{"item", row.name}, {"value", itemValue(row)}};
  if (changed["value"] != before) change.leavesUnsaved(unsavedBecause(row.keeping));
  if (*row.unit) changed["unit"] = row.unit;
  addOtherWords(row, changed);
  change.show(changed);
}

}  // namespace ctl
