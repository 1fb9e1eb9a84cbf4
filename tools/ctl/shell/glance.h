// SPDX-License-Identifier: Apache-2.0
// A look at the store without its lock, for what nobody is to wait for: a proposal, a prompt.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "kestrove/layout.h"

namespace ctl {

// Null where there is no store. What is read may change meanwhile.
const ShmData* glance();

// A count of the store that nobody has checked.
inline size_t bounded(int32_t count, size_t most) { return count < 0 ? 0 : std::min(static_cast<size_t>(count), most); }

// The account of exactly this name.
std::optional<UserAccount> accountAt(const ShmData& store, const std::string& user);

// sysName in one short word, or the gateway id.
std::string unitName(const ShmData& store);

}  // namespace ctl
