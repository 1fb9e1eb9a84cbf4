// SPDX-License-Identifier: Apache-2.0
// What the recorders of the sandbox wrote down.
#pragma once

#include <string>
#include <vector>

namespace kestrove::testing {

// Command lines given to the shell, exact, in order.
std::vector<std::string> shellLines();

// Programs started, each as its argument vector joined with blanks (arguments with a blank or none in double quotes),
// in order; the shell itself is left out. In record mode only.
std::vector<std::string> programs();

// What the given program (by its base name) was fed on standard input, one text for each run.
std::vector<std::string> inputsOf(const std::string& program);

// Everything recorded so far is forgotten.
void clearRecords();

// From now on the recorded program of that base name prints the text and exits with the status.
void answer(const std::string& program, const std::string& output, int status = 0);

// From now on it runs this shell script instead.
void perform(const std::string& program, const std::string& script);

}  // namespace kestrove::testing
