// SPDX-License-Identifier: Apache-2.0
// Help on a line as far as it is typed, and on single words.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/grammar.h"

namespace ctl {

// "rule add NUMBER [-ipVersion 4|6|Any] ...": a row with all its options.
std::string syntaxWithOptions(const Command& row);

// Its options of one dash with their help, a line each.
std::string scriptOptions(const Command& row);

// What may stand behind these words, a line each with its help: what "?" is answered with.
std::string whatMayFollow(const std::vector<std::string>& words);

// An item in all its vocabularies with what it accepts and where it is kept, by any of its names, or the commands that
// have the word. Empty where nothing is known of it.
std::string helpOfWord(const std::string& word);

}  // namespace ctl
