// SPDX-License-Identifier: Apache-2.0
// Process 1 of the appliance.
#pragma once

#include "sandbox/options.h"

namespace kestrove::sandbox {

// Builds the appliance in the new namespaces of this process, runs the command, collects the system log and the dead.
// Ends the process with the command's status, which ends everything that still runs in the appliance. `outside` reads
// end-of-file when the launcher is gone; then everything ends at once.
[[noreturn]] void runInit(const Options& options, int outside);

}  // namespace kestrove::sandbox
