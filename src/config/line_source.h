// SPDX-License-Identifier: Apache-2.0
// The lines of a file, read in large pieces.
#pragma once

#include <stddef.h>
#include <string.h>

namespace kestrove {

// Gives a file's lines one by one, each terminated in place, without its newline and cut to kLongestLine characters;
// the rest of a longer line is discarded. A last line without a newline counts, an unfinished line before a read error
// does not. The buffer of 64 KiB is inside: put it on the stack.
class LineSource {
 public:
  static constexpr size_t kLongestLine = 510;

  explicit LineSource(int fd) : fd_(fd) {}
  ~LineSource() { explicit_bzero(buffer_, sizeof buffer_); }  // a password may stand in a file
  LineSource(const LineSource&) = delete;
  LineSource& operator=(const LineSource&) = delete;

  // Null at the end of the file and after a read error. Good until the next call.
  char* next();
  [[nodiscard]] bool failed() const { return failed_; }

 private:
  static constexpr size_t kCapacity = 64 * 1024;

  size_t makeRoom();
  [[nodiscard]] bool refill();
  char* take(size_t length, size_t consumed);

  int fd_;
  bool ended_ = false;
  bool failed_ = false;
  size_t begin_ = 0;
  size_t end_ = 0;
  char buffer_[kCapacity + 1];
};

}  // namespace kestrove
