// SPDX-License-Identifier: Apache-2.0
// What the kernel of this network namespace has of the appliance, as texts that can be compared.
#pragma once

#include "tools/ctl/session.h"

namespace ctl::preview {

// {"links", "bridges", "addresses", "routes", "routes6", "rules", "rules6", "filter", "filter6"}: the lines of each,
// without what changes by itself (numbers of interfaces, lifetimes, counters). Empty where the kernel or its program
// gives none.
Json kernelState();

// The same, once it is twice the same in a row: what the kernel does behind a command takes its time.
Json settledKernelState();

// The kernel's links, as "ip -d -j link" has them.
Json kernelLinks();

}  // namespace ctl::preview
