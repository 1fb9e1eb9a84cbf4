// SPDX-License-Identifier: Apache-2.0
// The grammar as the part of doc/kestrovectl.md that lists the commands.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/grammar.h"

namespace ctl {

std::string joined(const std::vector<std::string>& words, const char* between);

// "rule add POSITION [OPTION...]"
std::string syntaxOf(const Command& row);

// A value with the commands that take it: those of a group often share theirs.
struct SharedValue {
  const Value* value;
  std::vector<std::string> commands;
};
std::vector<SharedValue> sharedValues(const std::vector<const Command*>& rows);

// The rows by their first words, without those for the program's own use.
std::vector<std::vector<const Command*>> families(const std::vector<Command>& rows);

// Markdown, from one mark in the document to the other.
std::string reference(const std::vector<Command>& rows);

}  // namespace ctl
