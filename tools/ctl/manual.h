// SPDX-License-Identifier: Apache-2.0
// The manual page of kestrovectl, with the commands, options and exit codes of the program's own tables.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/grammar.h"

namespace ctl {

// In the language of scdoc.
std::string manualPage(const std::vector<Command>& rows);

// As it is read where no manual can be shown: without marks.
std::string manualText(const std::vector<Command>& rows);

// The page of the configuration file: the keywords of the program, with what doc/configuration-file.md says that they
// set. Throws std::runtime_error where the document lacks one.
std::string keywordPage(std::string page, const std::string& document);

}  // namespace ctl
