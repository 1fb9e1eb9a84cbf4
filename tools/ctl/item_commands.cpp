// SPDX-License-Identifier: Apache-2.0
// show, set.
#include <cstdlib>
#include <vector>

#include "kestrove/kestrove.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/change.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/item_names.h"
#include "tools/ctl/reading.h"

namespace ctl {
namespace {

std::string hint(const std::string& name) {
  std::vector<std::string_view> names;
  for (const ItemRow& row : itemRows()) names.push_back(row.name);
  const std::string near = tools::nearest(name, names);
  return near.empty() ? "kestrovectl show lists them" : "did you mean " + near + "?";
}

const ItemRow& itemNamed(const std::string& name) {
  const ItemRow* row = findItemRow(name);
  if (!row) throw Refusal(kUsage, name + ": no such item (" + hint(name) + ")");
  return *row;
}

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

Json itemRowsOf(const std::vector<std::string>& names) {
  Json items = Json::array();
  auto add = [&](const ItemRow& row) {
    items.push_back({{"item", row.name}, {"value", itemValue(row)}, {"unit", row.unit}, {"accepts", rangeText(row)}});
  };
  for (const std::string& name : names) add(itemNamed(name));
  if (names.empty()) {
    for (const ItemRow& row : itemRows()) add(row);
  }
  return items;
}

std::string accepted(const ItemRow& row) {
  return std::string(row.name) + " takes " + rangeText(row) + (*row.unit ? std::string(" ") + row.unit : "");
}

uint32_t wordOf(const ItemRow& row, const std::string& value) {
  if (row.form == ItemForm::kSwitch) {
    const NamedNumber* position = findName(kSwitches, value);
    if (!position) throw Refusal(kUsage, value + ": " + accepted(row));
    return static_cast<uint32_t>(position->number);
  }
  if (row.form == ItemForm::kAddress) {
    return std::string(row.name).ends_with("Mask") ? parseMask(value) : parseAddress(value);
  }
  char* end = nullptr;
  errno = 0;
  unsigned long long number = strtoull(value.c_str(), &end, 10);
  const bool digits = !value.empty() && value[0] >= '0' && value[0] <= '9' && !*end;
  if (!digits || errno != 0 || number > UINT32_MAX) throw Refusal(kUsage, value + ": " + accepted(row));
  return static_cast<uint32_t>(number);
}

int setWord(const Session& session, const ItemRow& row, uint32_t value) {
  if (row.family == ItemFamily::kConfig) {
    return setKestroveConfigItem(row.id, value, session.source, session.userName());
  }
  return setNetworkConfigItem(row.id, &value, session.source, session.userName());
}

// A save that failed comes as a failure of the whole: the store then holds the new value.
void setItem(const Session& session, Change& change, const ItemRow& row, const std::string& value) {
  if (row.form == ItemForm::kText) {
    change.made(setShmString(row.id, value.c_str()), accepted(row));
    return;
  }
  const uint32_t word = wordOf(row, value);
  change.made(setWord(session, row, word), accepted(row), [&] { return itemWord(row) == word; });
}

const char* unsavedBecause(Keeping keeping) {
  switch (keeping) {
    case Keeping::kSaved: return "";
    case Keeping::kSavedLater: return "the next save of anything writes it";
    case Keeping::kUntilRebuilt: return "the configuration file has no line for it";
  }
  return "";
}

struct ShowLine {
  std::vector<std::string> names;
};

void show(const Session& session, const ShowLine& line) {
  showRead(session, [&line] { return itemRowsOf(line.names); });
}

struct SetLine {
  std::string name, value;
};

void set(const Session& session, const SetLine& line) {
  const std::string& name = line.name;
  const ItemRow& row = itemNamed(name);
  requireStore(session);
  if (!*row.range) throw Refusal(kRefused, name + ": " + shm_strerror(SHM_EREADONLY), SHM_EREADONLY);
  Change change(session);
  const Json before = itemValue(row);
  setItem(session, change, row, line.value);
  Json changed = {{"item", name}, {"value", itemValue(row)}};
  if (changed["value"] != before) change.leavesUnsaved(unsavedBecause(row.keeping));
  if (*row.unit) changed["unit"] = row.unit;
  change.show(changed);
}

}  // namespace

std::vector<Command> itemCommands() {
  return {command("show", "Items with value, unit and what they accept", show,
                  {several("ITEM", &ShowLine::names, takes::item(), "Names of items (default: all)")}),
          changing("set", "Change an item", set,
                   {needed("ITEM", &SetLine::name, takes::item(), "Name of the item"),
                    needed("VALUE", &SetLine::value, takes::text().from(Completion::kItemValues),
                           "New value; a switch is on or off")})};
}

}  // namespace ctl
