// SPDX-License-Identifier: Apache-2.0
// The numbered items that are settings, with their places in the configuration record.
#pragma once

#include <span>
#include <string>

#include "kestrove/layout.h"
#include "tools/ctl/item_names.h"

namespace ctl {

struct SettingItem {
  const ItemRow* row;
  size_t offset;
  size_t width;
};

// In the order of the table of items.
std::span<const SettingItem> settingItems();
const SettingItem* findSettingItem(const std::string& name);

uint32_t wordOf(const SettingItem& item, const ConfigRecord& config);
void putWord(const SettingItem& item, ConfigRecord& config, uint32_t value);
std::string textOf(const SettingItem& item, const ConfigRecord& config);
void putText(const SettingItem& item, ConfigRecord& config, const std::string& text);

}  // namespace ctl
