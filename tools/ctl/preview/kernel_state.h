// SPDX-License-Identifier: Apache-2.0
// What the kernel of this network namespace has of the appliance, as texts that can be compared.
#pragma once

#include <functional>

#include "tools/ctl/session.h"

namespace ctl::preview {

// {"links", "bridges", "addresses", "routes", "routes6", "rules", "rules6", "filter", "filter6"}: the lines of each,
// without what changes by itself (numbers of interfaces, lifetimes, counters). Empty where the kernel or its program
// gives none.
Json kernelState();

// The same, once it is twice the same in a row and what was waited for is there: what the kernel does behind a command
// takes its time. After two seconds as it is.
Json settledKernelState(const std::function<bool(const Json& state)>& there = [](const Json&) { return true; });

// The kernel's links, as "ip -d -j link" has them.
Json kernelLinks();

}  // namespace ctl::preview
