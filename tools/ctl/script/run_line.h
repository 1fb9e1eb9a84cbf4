// SPDX-License-Identifier: Apache-2.0
// Lines of kestrovectl, one after the other: from its command line, a file, standard input or a shell.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/session.h"

namespace ctl {

// Runs one line and reports what came of it, on the session's output and on standard error. Gives the exit code.
// Options of the line hold for the line alone. A blank line, or one that begins with "#", does nothing.
int runLine(const Session& session, const std::string& line);
int runWords(const Session& session, const std::vector<std::string>& words);

// While it lives, messages of report() name this line.
class LinePlace {
 public:
  LinePlace(const char* file, size_t number);
  ~LinePlace();
  LinePlace(const LinePlace&) = delete;
  LinePlace& operator=(const LinePlace&) = delete;

 private:
  std::string before_;
};

// A refusal as it is printed, on standard error or as JSON. Gives the exit code.
int report(const Session& session, const Refusal& refusal);

}  // namespace ctl
