// SPDX-License-Identifier: Apache-2.0
// The launcher's command line.
#pragma once

#include <string>
#include <vector>

namespace kestrove::sandbox {

struct Options {
  std::string program;  // the launcher itself, absolute
  bool record = false;
  bool ports = true;
  bool overlay = true;
  bool terminal = false;           // the command gets the terminal's foreground
  std::string state;               // absolute, empty without --state
  std::string shared;              // absolute, empty without --share
  std::vector<std::string> shown;  // absolute, one for each --bind
  char** command = nullptr;        // ended by a null pointer
};

// Ends the process on --help and on a line that cannot be understood.
Options readOptions(int argc, char** argv);

}  // namespace kestrove::sandbox
