// SPDX-License-Identifier: Apache-2.0
// A line of a configuration file as the library sees it, with the places of its words.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace ctl::lint {

struct Word {
  std::string_view text;
  size_t column = 1;
};

struct ConfigLine {
  std::string_view text;  // what is read of it
  size_t unread = 0;      // the column from which on it is not read; 0 where all of it is
  bool zero = false;      // because a zero byte stands there
  Word keyword;           // empty on a blank line and in a comment
  Word value;             // up to the end, without the one separator that is taken off there
};

// The line without its line feed. The texts are of the line that is given.
ConfigLine readConfigLine(std::string_view line);

// The words of a value, split where rows are.
std::vector<Word> wordsOf(const Word& value);

}  // namespace ctl::lint
