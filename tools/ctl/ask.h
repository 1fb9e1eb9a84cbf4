// SPDX-License-Identifier: Apache-2.0
// Questions to a person at a terminal.
#pragma once

#include <string>

namespace ctl {

// Whether somebody sits there who can be asked.
bool canAsk();

// Asks on standard error and takes a line: only y and yes agree. An end of input or a signal is a no.
bool agrees(const std::string& question);

// For what cannot be taken back: without --yes a person has to agree, and where nobody can be asked it is refused.
// Throws kUsage there and kRefused on a no, both before anything is changed.
void requireAgreement(bool yes, const std::string& command, const std::string& question);

}  // namespace ctl
