// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/item_names.h"

#include "kestrove/codes.h"
#include "kestrove/segment.h"

namespace ctl {
namespace {

// Network items and texts save whatever changes.
constexpr Keeping keepingOf(const ItemRow& row) {
  if (!*row.keyword) return Keeping::kUntilRebuilt;
  return row.saves || row.actionSaves || row.family != ItemFamily::kConfig ? Keeping::kSaved : Keeping::kSavedLater;
}

constexpr ItemRow completed(ItemRow row) {
  if (!row.name) row.name = row.field;
  row.keeping = keepingOf(row);
  return row;
}

#define ROW(kind, number, member) .code = #number, .field = #member, .family = ItemFamily::kind, .id = number
#define ITEM(number, member, ...) completed({ROW(kConfig, number, member), __VA_ARGS__}),
#define NETWORK_ITEM(number, member, ...) completed({ROW(kNetwork, number, member), __VA_ARGS__}),
#define TEXT(number, member, ...) completed({ROW(kText, number, member), .form = ItemForm::kText, __VA_ARGS__}),
#define NAME(word) .name = word,
#define ALSO(number) .synonym = number,
#define READ_ONLY_SWITCH .form = ItemForm::kSwitch,
#define SWITCH .form = ItemForm::kSwitch, .range = "on, off",
#define ANY .range = within(0, UINT32_MAX),
#define ANY_BYTE .range = within(0, UINT8_MAX),
#define WITHIN(low, high) .range = within(low, high),
#define BOUNDS(low, high) .range = within(low, high),
#define BOUNDS_FROM(lowest, high) .range = upTo(high, #lowest),
#define ONE_OF(...) .range = oneOf({__VA_ARGS__}),
#define NAMED(value, word) \
  { value, word }
#define ADDRESS .form = ItemForm::kAddress, .range = "an IPv4 address",
#define MASK .form = ItemForm::kAddress, .range = "a netmask or prefix length",
#define SETTABLE .range = "up to 256 characters",
#define UNIT(text) .unit = text,
#define NO_HOLES .noHoles = true,
#define PRESENT(function, text) .present = text,
#define EVENTS(on, off) .onEvent = on, .offEvent = off,
#define SAVE .saves = true,
#define BIT(mark) .bit = mark,
#define DROPS_WAN_ARP .dropsWanArp = true,
#define PBR_BIT(mark) .pbrBit = mark,
#define MODE_EVENT(event) .modeEvent = event,
#define ACTION(function, text) .action = text,
#define SAVING_ACTION(function, text) .action = text, .actionSaves = true,
#define KEYWORD(word) .keyword = word,
#define SCRIPT(words) .script = words,
#define SCRIPT_UNIT(factor, text) .scriptFactor = factor, .scriptUnit = text,
#define SCRIPT_WORDS(words) .scriptWords = words,
#define REMARK(text) .remark = text,

constexpr ItemRow kRows[] = {
#include "items/items.def"
};
#undef ROW

void resolve(std::string& range, const std::string& name, uint32_t value) {
  const size_t at = range.find(name);
  if (at != std::string::npos) range.replace(at, name.size(), std::to_string(value));
}

}  // namespace

std::span<const ItemRow> itemRows() { return kRows; }

const ItemRow* findItemRow(const std::string& name) {
  for (const ItemRow& row : kRows) {
    if (name == row.name) return &row;
  }
  return nullptr;
}

const ItemRow* findKeywordRow(const std::string& keyword) {
  if (keyword.empty()) return nullptr;
  for (const ItemRow& row : kRows) {
    if (keyword == row.keyword) return &row;
  }
  return nullptr;
}

std::string rangeText(const ItemRow& row) {
  std::string range(row.range);
  resolve(range, "minRate", shm->config.minRate);
  resolve(range, "minMtu", shm->config.minMtu);
  return range;
}

}  // namespace ctl
