// SPDX-License-Identifier: Apache-2.0
// The kernel state of an appliance, carried into the sandbox.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/session.h"

namespace ctl::preview {

// Of the namespace of this process: {"links", "state"}.
Json exportKernel();

// Makes the sandbox's kernel answer as the exported one would: its links by name, hardware address, bridge and state,
// its addresses, routes, rules and packet filter.
void importKernel(const Json& kernel);

// Whether a state has all that the kernel makes by itself of the exported links and addresses. It does so once they are
// up, which may be a second after they were made.
bool hasItsOwn(const Json& kernel, const Json& state);

// The lines of the exported state that a state lacks.
std::vector<std::string> missingLines(const Json& kernel, const Json& state);

}  // namespace ctl::preview
