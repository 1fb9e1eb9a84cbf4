// show, set.
#include <cstdlib>
#include <vector>

#include "kestrove/kestrove.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/item_names.h"

namespace ctl {
namespace {

const ItemRow& itemNamed(const std::string& name) {
  const ItemRow* row = findItem(name);
  if (!row) throw Refusal(kUsage, name + ": no such item (kestrovectl show lists them)");
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
    case ItemForm::kSwitch: {
      uint32_t value = itemWord(row);
      return value == SHM_ON || value == SHM_OFF ? Json(switchText(value)) : Json(value);
    }
    case ItemForm::kNumber: return itemWord(row);
  }
  return nullptr;
}

void show(const Session& session, const std::vector<std::string>& names) {
  requireStore();
  Json items = Json::array();
  auto add = [&](const ItemRow& row) {
    items.push_back({{"item", row.name}, {"value", itemValue(row)}, {"unit", row.unit}, {"accepts", row.range}});
  };
  for (const std::string& name : names) add(itemNamed(name));
  if (names.empty()) {
    for (const ItemRow& row : itemRows()) add(row);
  }
  session.show(items);
}

uint32_t wordOf(const ItemRow& row, const std::string& value) {
  if (row.form == ItemForm::kSwitch) {
    if (value == "on") return SHM_ON;
    if (value == "off") return SHM_OFF;
  }
  if (row.form == ItemForm::kAddress) {
    return std::string(row.name).ends_with("Mask") ? parseMask(value) : parseAddress(value);
  }
  char* end = nullptr;
  errno = 0;
  unsigned long long number = strtoull(value.c_str(), &end, 10);
  if (value.empty() || *end || value[0] == '-' || errno != 0 || number > UINT32_MAX) {
    throw Refusal(kUsage, value + ": " + row.name + " takes " + (*row.range ? row.range : "no value"));
  }
  return static_cast<uint32_t>(number);
}

int setWord(const Session& session, const ItemRow& row, uint32_t value) {
  if (row.family == ItemFamily::kConfig) {
    return setKestroveConfigItem(row.id, value, session.source, session.userName());
  }
  return setNetworkConfigItem(row.id, &value, session.source, session.userName());
}

void set(const Session& session, const std::string& name, const std::string& value) {
  const ItemRow& row = itemNamed(name);
  requireStore();
  if (!*row.range) throw Refusal(kRefused, name + ": " + shm_strerror(SHM_EREADONLY), SHM_EREADONLY);
  int result =
      row.form == ItemForm::kText ? setShmString(row.id, value.c_str()) : setWord(session, row, wordOf(row, value));
  if (result < 0) throw refusal(name + " takes " + row.range + (*row.unit ? std::string(" ") + row.unit : ""));
  Json changed = {{"item", name}, {"value", itemValue(row)}};
  if (*row.unit) changed["unit"] = row.unit;
  session.show(changed);
}

}  // namespace

void addItemCommands(CLI::App& app, Session& session) {
  static std::vector<std::string> names;
  CLI::App* showing = app.add_subcommand("show", "Items with value, unit and what they accept");
  showing->add_option("ITEM", names, "Names of items (default: all)");
  showing->callback([&session] { show(session, names); });

  static std::string name;
  static std::string value;
  CLI::App* setting = app.add_subcommand("set", "Change an item");
  setting->add_option("ITEM", name, "Name of the item")->required();
  setting->add_option("VALUE", value, "New value")->required();
  setting->callback([&session] { set(session, name, value); });
}

}  // namespace ctl
