// SPDX-License-Identifier: Apache-2.0
// Every section of the store as JSON: addresses as text, switches as words.
#pragma once

#include "tools/ctl/session.h"

namespace ctl {

// A member for each section of the dump. For a caller that holds the store; throws a Refusal when it cannot be read.
Json dumpJson();

}  // namespace ctl
