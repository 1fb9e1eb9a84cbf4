// SPDX-License-Identifier: Apache-2.0
// show, set.
#include <vector>

#include "kestrove/kestrove.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/item_setting.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/script/script_rows.h"

namespace ctl {
namespace {

Json itemRowsOf(const std::vector<std::string>& names) {
  Json items = Json::array();
  auto add = [&](const ItemRow& row) {
    items.push_back({{"item", row.name}, {"value", itemValue(row)}, {"unit", row.unit}, {"accepts", rangeText(row)}});
  };
  for (const std::string& name : names) add(*itemNamed(name).row);
  if (names.empty()) {
    for (const ItemRow& row : itemRows()) add(row);
  }
  return items;
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

void set(const Session& session, const SetLine& line) { setItem(session, itemNamed(line.name), line.value); }

Wish wish(const SetLine& line) { return itemWish(itemNamed(line.name), line.value); }

constexpr char kNames[] =
    "An item may also be named by its keyword in the configuration file (set INTERNET_RATE 2048000) or by the words of "
    "a "
    "saved script (set rateLimit WAN 2048, in kbit/s). A rate may have a suffix: 512k, 1M, 2G bits per second.";

}  // namespace

std::vector<Command> itemCommands() {
  std::vector<Command> rows = {
      command("show", "Items with value, unit and what they accept", show,
              {several("ITEM", &ShowLine::names, takes::item(), "Names of items (default: all)")}),
      setting("set", "Change an item", set, wish,
              {needed("ITEM", &SetLine::name, takes::item(), "Name of the item"),
               needed("VALUE", &SetLine::value, takes::text().from(Completion::kItemValues),
                      "New value; a switch is on or off")},
              kNames)};
  for (Command& row : scriptItemCommands()) rows.push_back(std::move(row));
  return rows;
}

}  // namespace ctl
