// SPDX-License-Identifier: Apache-2.0
// The tables that the kernel has, too.
#pragma once

#include "tools/ctl/session.h"

namespace ctl {

// {"addresses", "routes", "routes6"}: each row with what the table says of it, whether the kernel has it, and why not.
// For a caller that holds the store. Throws kSystem where ip cannot tell.
Json kernelTables();

}  // namespace ctl
