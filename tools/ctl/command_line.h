// SPDX-License-Identifier: Apache-2.0
// The parser, made from the grammar.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "CLI/CLI.hpp"
#include "tools/ctl/grammar.h"

namespace ctl {

// Each row becomes a subcommand that runs its handler; the shared options go into the session. Rows and session must
// outlive the parser.
void describeProgram(CLI::App& app, Session& session);
void addSharedOptions(CLI::App& app, Session& session);
void addCommands(CLI::App& app, const Session& session, const std::vector<Command>& rows);

// The same without the commands whose first word is not on the line: it takes what the whole parser takes and does the
// same, in a part of the time. What it refuses the whole parser has to explain.
void addNamedCommands(CLI::App& app, const Session& session, const std::vector<Command>& rows,
                      const std::vector<std::string>& line);

// Whether who has logged in may give the option: nobody acts for others.
bool mayGive(const Session& session, const std::string& option);

// The handler of a row, unless the session may only read and the row changes something. Throws its Refusal.
void runRow(const Session& session, const Command& row, const Given& given);

}  // namespace ctl
