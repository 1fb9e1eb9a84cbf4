// SPDX-License-Identifier: Apache-2.0
// The appliance's root file system.
#pragma once

#include "sandbox/options.h"

namespace kestrove::sandbox {

// Builds it in this process's mount namespace, which must be new. makeStage and the layers must have come before.
void mountRoot(const Options& options);

// Makes it the root and lets go of the machine's.
void enterRoot();

}  // namespace kestrove::sandbox
