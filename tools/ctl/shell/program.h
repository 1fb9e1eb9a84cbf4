// SPDX-License-Identifier: Apache-2.0
// The program itself, as the shell runs each of its lines.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/session.h"

namespace ctl {

// Runs one command with these words, and reports what came of it; gives the exit status.
int runProgram(const Session& session, const std::vector<std::string>& words);

// Whether this is such a command.
bool inShell();

}  // namespace ctl
