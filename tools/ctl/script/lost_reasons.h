// SPDX-License-Identifier: Apache-2.0
// Why a setting does not come back from a saved script.
#pragma once

#include <string>

#include "tools/ctl/settings/difference.h"

namespace ctl {

// Of a difference between what a script makes and the store that it was saved from. Empty where no reason of the format
// itself is known.
std::string lostReason(const SettingChange& change, const ShmData& store);

}  // namespace ctl
