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

// Markdown, from one mark in the document to the other.
std::string reference(const std::vector<Command>& rows);

}  // namespace ctl
