// SPDX-License-Identifier: Apache-2.0
// What a saved script cannot hold of a store.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/settings/difference.h"

namespace ctl {

// The script that the library saves of a store, written on a copy of the appliance.
std::string savedScript(const Image& image);

struct LostSetting {
  SettingChange change;  // from what the script brings back to what the store holds
  std::string reason;
};

// What differs between the store and what its saved script makes of an empty one.
std::vector<LostSetting> lostIn(const Image& image);

}  // namespace ctl
