// SPDX-License-Identifier: Apache-2.0
// The machine's file systems, as they are mounted before the appliance's root is built.
#pragma once

#include <string>
#include <vector>

namespace kestrove::sandbox {

// The mount points below /, parents first, without what the appliance has of its own.
std::vector<std::string> hostMounts();

}  // namespace kestrove::sandbox
