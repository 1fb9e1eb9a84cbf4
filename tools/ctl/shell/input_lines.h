// SPDX-License-Identifier: Apache-2.0
// The lines of standard input, none read further than to its end: a command that reads there finds what follows.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace ctl {

class InputLines {
 public:
  InputLines();

  // None at the end. Throws kUsage for a line of more than 64 KiB, which is then passed over.
  std::optional<std::string> next();
  size_t number() const { return number_; }  // of the last line, from 1 on

 private:
  bool readSome(std::string& line);

  bool file_;  // can be gone back in
  size_t number_ = 0;
};

}  // namespace ctl
