// SPDX-License-Identifier: Apache-2.0
// The launcher's own process, outside.
#pragma once

#include "sandbox/options.h"

namespace kestrove::sandbox {

// Makes the namespaces, runs the appliance and waits for its end. Gives the exit status of the whole.
int launch(const Options& options);

}  // namespace kestrove::sandbox
