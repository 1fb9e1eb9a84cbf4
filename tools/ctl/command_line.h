// SPDX-License-Identifier: Apache-2.0
// The parser, made from the grammar.
#pragma once

#include "CLI/CLI.hpp"
#include "tools/ctl/grammar.h"

namespace ctl {

// Each row becomes a subcommand that runs its handler; the shared options go into the session. Rows and session must
// outlive the parser.
void addSharedOptions(CLI::App& app, Session& session);
void addCommands(CLI::App& app, const Session& session, const std::vector<Command>& rows);

}  // namespace ctl
