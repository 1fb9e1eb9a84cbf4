// SPDX-License-Identifier: Apache-2.0
// What a wrong command line is told.
#pragma once

#include <string>

#include "CLI/CLI.hpp"

namespace ctl {

// The help of the command that was asked about, with its whole name in the usage line; of everything when none was.
std::string helpOf(const CLI::App& app);

// That usage line alone.
std::string usageOf(const CLI::App& app);

// What is wrong, with the command or option that was probably meant.
std::string usageError(const CLI::App& app, const CLI::ParseError& error);

}  // namespace ctl
