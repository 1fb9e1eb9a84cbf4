// SPDX-License-Identifier: Apache-2.0
// Lines of a text stream.
#pragma once

#include <stdio.h>

namespace kestrove {

// Reads up to the delimiter or the end of file into a buffer of size bytes, terminated. With squeeze, blanks at both
// ends vanish and every run of blanks, tabs and control characters becomes one space. Returns the number of characters
// stored, or size when the line was cut (its rest is consumed), or -1: code 3 for a size below 1, 11 at end of file,
// 2 for a stream error.
[[nodiscard]] int readDelimitedLine(char* buf, int size, int squeeze, FILE* stream, char delimiter);

// One line being stored.
class LineBuffer {
 public:
  LineBuffer(char* buffer, int size, bool squeeze)
      : start_(buffer), position_(buffer), last_(buffer + size - 1), squeeze_(squeeze) {}

  void add(char c) {
    if (squeeze_ && !graphic(c)) {
      if (position_ == start_ || position_[-1] == ' ') return;
      c = ' ';
    }
    if (position_ == last_) {
      truncated_ = true;
      return;
    }
    *position_++ = c;
  }
  // Terminates the text and tells its length.
  int finish() {
    if (squeeze_ && position_ != start_ && position_[-1] == ' ') --position_;
    *position_ = '\0';
    return static_cast<int>(position_ - start_);
  }
  bool truncated() const { return truncated_; }

 private:
  static bool graphic(char c) { return c > ' ' && c < 0x7F; }

  char* start_;
  char* position_;
  char* last_;
  bool squeeze_;
  bool truncated_ = false;
};

}  // namespace kestrove
