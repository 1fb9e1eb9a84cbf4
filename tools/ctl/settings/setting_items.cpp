// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/settings/setting_items.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "kestrove/codes.h"

namespace ctl {
namespace {

struct Field {
  size_t offset;
  size_t width;
};

#define FIELD(member) {offsetof(ConfigRecord, member), sizeof(std::declval<ConfigRecord&>().member)},
#define ITEM(number, member, ...) FIELD(member)
#define NETWORK_ITEM(number, member, ...) FIELD(member)
#define TEXT(number, member, ...) FIELD(member)
// In the order of itemRows().
constexpr Field kFields[] = {
#include "items/items.def"
};
#undef FIELD

struct Left {
  ItemFamily family;
  int id;
};
// What can be set but is no setting: set by the library, the hardware or a log-in; and policy routing, which is a mode.
constexpr Left kLeft[] = {{ItemFamily::kConfig, SHM_ITEM_LAN_PBR_ROUTE_SET},
                          {ItemFamily::kConfig, SHM_ITEM_WAN_PBR_ROUTE_SET},
                          {ItemFamily::kConfig, SHM_ITEM_RELAY_STATUS},
                          {ItemFamily::kConfig, SHM_ITEM_POLICY_ROUTING},
                          {ItemFamily::kText, SHM_TEXT_WEB_SESSION}};

bool isSetting(const ItemRow& row) {
  auto same = [&row](const Left& one) { return one.family == row.family && one.id == row.id; };
  return *row.range && std::none_of(std::begin(kLeft), std::end(kLeft), same);
}

std::vector<SettingItem> listed() {
  std::vector<SettingItem> items;
  const std::span<const ItemRow> rows = itemRows();
  for (size_t i = 0; i < rows.size(); ++i) {
    if (isSetting(rows[i])) items.push_back({&rows[i], kFields[i].offset, kFields[i].width});
  }
  return items;
}

}  // namespace

std::span<const SettingItem> settingItems() {
  static const std::vector<SettingItem> items = listed();
  return items;
}

const SettingItem* findSettingItem(const std::string& name) {
  for (const SettingItem& item : settingItems()) {
    if (name == item.row->name) return &item;
  }
  return nullptr;
}

// Fields are bytes or words, little-endian.
uint32_t wordOf(const SettingItem& item, const ConfigRecord& config) {
  uint32_t value = 0;
  memcpy(&value, reinterpret_cast<const char*>(&config) + item.offset, std::min(item.width, sizeof value));
  return value;
}

void putWord(const SettingItem& item, ConfigRecord& config, uint32_t value) {
  memcpy(reinterpret_cast<char*>(&config) + item.offset, &value, std::min(item.width, sizeof value));
}

std::string textOf(const SettingItem& item, const ConfigRecord& config) {
  const char* field = reinterpret_cast<const char*>(&config) + item.offset;
  return {field, strnlen(field, item.width)};
}

void putText(const SettingItem& item, ConfigRecord& config, const std::string& text) {
  char* field = reinterpret_cast<char*>(&config) + item.offset;
  memset(field, 0, item.width);
  std::copy_n(text.begin(), std::min(item.width, text.size()), field);
}

}  // namespace ctl
