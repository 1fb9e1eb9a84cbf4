// SPDX-License-Identifier: Apache-2.0
// The rows of the grammar for lines of saved scripts.
#pragma once

#include <vector>

#include "tools/ctl/grammar.h"

namespace ctl {

// set rateLimit WAN, set interfaceMode ...: behind "set".
std::vector<Command> scriptItemCommands();
// rule add: behind the one with words of its own.
Command scriptRuleCommand();

}  // namespace ctl
