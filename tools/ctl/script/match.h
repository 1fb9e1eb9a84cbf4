// SPDX-License-Identifier: Apache-2.0
// A line held against the rows of the grammar, without a parser being built for it: what thousands of lines are read
// by.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "tools/ctl/grammar.h"

namespace ctl {

struct Match {
  const Command* row = nullptr;  // null where no row takes the line
  Given given;
  Given shared;                   // of sharedOptions(), in their order
  const Command* near = nullptr;  // the row that the words belong to, where its values are not taken
  std::string complaint;          // why not; empty for what is left to the parser: help, versions, lines within lines
};

class Matcher {
 public:
  // The rows must outlive it.
  explicit Matcher(const std::vector<Command>& rows);

  Match match(const std::vector<std::string>& words) const;

  // Other names of commands as those of the table: del, rm, ls, remove for delete and the other way round.
  std::vector<std::string> withoutAliases(const std::vector<std::string>& words) const;

 private:
  using Rows = std::vector<const Command*>;
  const Rows* rowsOf(const std::string& words) const;
  const Rows* longest(const std::vector<std::string>& words, size_t& used) const;
  void resolve(std::vector<std::string>& words, size_t at, std::string& known) const;

  std::unordered_map<std::string, Rows> rows_;
};

// Of the whole grammar, made once.
const Matcher& matcher();

}  // namespace ctl
