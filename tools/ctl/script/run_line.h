// SPDX-License-Identifier: Apache-2.0
// Lines of kestrovectl, one after the other: from its command line, a file, standard input or a shell.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "tools/ctl/session.h"

namespace ctl {

// Runs one line and reports what came of it, on the session's output and on standard error. Gives the exit code.
// Options of the line hold for the line alone. A blank line, or one that begins with "#", does nothing.
int runLine(const Session& session, const std::string& line);
int runWords(const Session& session, const std::vector<std::string>& words);

// Every line of it, without prompts, whatever comes of the others; messages name the line. Gives the code of the first
// that failed.
int runLines(const Session& session, FILE* in);

// A refusal as it is printed, on standard error or as JSON. Gives the exit code.
int report(const Session& session, Exit exit, const std::string& message, int code = -1);

}  // namespace ctl
