// SPDX-License-Identifier: Apache-2.0
// What the exit status of kestrovectl says: one table for the help, the documents and the manual.
#pragma once

#include <span>

#include "tools/ctl/session.h"

namespace ctl {

struct ExitCode {
  Exit exit;
  const char* brief;    // of the help
  const char* meaning;  // of the documents
};

std::span<const ExitCode> exitCodes();

// What is to be added to the table.
inline constexpr char kExitOfExplain[] = "explain ends with the status of the command that it explains.";

// "Exit status:" and a line for each.
std::string exitCodesText();

}  // namespace ctl
