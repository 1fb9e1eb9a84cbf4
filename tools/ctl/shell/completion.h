// SPDX-License-Identifier: Apache-2.0
// completion, and what its script asks.
#pragma once

#include "tools/ctl/grammar.h"

namespace ctl {

std::vector<Command> completionCommands();

}  // namespace ctl
