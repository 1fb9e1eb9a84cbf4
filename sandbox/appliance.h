// SPDX-License-Identifier: Apache-2.0
// The appliance's own files: its folders, its scripts, the recorders.
#pragma once

#include "sandbox/options.h"

namespace kestrove::sandbox {

// Lays everything onto the stage, before the root is mounted over it.
void layAppliance(const Options& options);

}  // namespace kestrove::sandbox
