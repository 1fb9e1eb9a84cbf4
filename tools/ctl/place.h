// SPDX-License-Identifier: Apache-2.0
// Where a line that is being typed stands in the grammar, and what may come next: what a shell completes and explains.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/grammar.h"

namespace ctl {

struct Place {
  const Command* row = nullptr;       // the command so far; null in front of its first word
  std::vector<const Command*> below;  // commands that the next word may lead to
  const Value* next = nullptr;        // the value that the next word is for; null where none may come
  std::vector<const Value*> options;  // that may come next, without those that are there
};

// Behind whole words: the one that is being typed is not among them. A word that no row takes counts as a value.
Place placeBehind(const std::vector<Command>& rows, const std::vector<std::string>& words);

}  // namespace ctl
