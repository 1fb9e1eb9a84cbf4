// SPDX-License-Identifier: Apache-2.0
// The program itself, as the shell runs each of its lines.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/session.h"

namespace ctl {

// Takes the words of a command line, the first of which is the program's name; gives back the exit status.
using Program = int (*)(Session&, int, char**);

void setProgram(Program program);

// Runs one command with these words.
int runProgram(const Session& session, const std::vector<std::string>& words);

// Whether this is a line of the shell.
bool inShell();

}  // namespace ctl
