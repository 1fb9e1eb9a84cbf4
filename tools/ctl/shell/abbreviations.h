// SPDX-License-Identifier: Apache-2.0
// The words of commands may be cut in the shell, as long as they say what is meant.
#pragma once

#include "tools/ctl/grammar.h"
#include "tools/ctl/shell/typed_line.h"

namespace ctl {

// "ru a 0" as "rule add 0". Values and options stay as they are. Throws kUsage for what may be several commands.
Words spelledOut(const std::vector<Command>& rows, const Words& words);

}  // namespace ctl
