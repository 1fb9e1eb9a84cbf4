// SPDX-License-Identifier: Apache-2.0
// The lines of a script and their words.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace ctl {

// The longest line that is one. A longer one is cut there, and refused as too long where its words are asked for.
inline constexpr size_t kLongestLine = 4096;

// Lines without their ends, a last one without an end, too. What it is given is never closed.
class LineReader {
 public:
  explicit LineReader(FILE* in) : in_(in) {}
  bool next(std::string& line);
  bool failed() const;  // the system's error, where the reading ended with one

 private:
  FILE* in_;
};

// Nothing but blanks, or a remark.
bool isBlankLine(const std::string& line);

// Words of a line as of a shell: blanks part them, quotes of both kinds and backslashes keep them together, "#" in
// front of a word ends the line. Throws kUsage for a quote that does not end, a control character and a line that is
// too long.
std::vector<std::string> wordsOfLine(const std::string& line);

}  // namespace ctl
