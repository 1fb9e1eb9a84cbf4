// SPDX-License-Identifier: Apache-2.0
// Programs whose output is wanted.
#pragma once

#include <string>
#include <vector>

namespace tools {

struct Output {
  int status = -1;  // exit status; -1 when it was killed or could not run
  std::string text;
};

// Runs a fixed line through the shell.
Output runForOutput(const char* line);

// Runs a vector without a shell; its standard output is the text, standard error stays this process's own unless it is
// to be quiet.
Output runForOutput(const std::vector<std::string>& vector, bool quiet = false);

// The folder of this program, for programs installed beside it.
std::string ownFolder();

// The first that exists of: beside this program, the given folder relative to it, the search path. Empty if none.
std::string findProgram(const std::string& name, const std::string& relativeFolder = "");

}  // namespace tools
