// SPDX-License-Identifier: Apache-2.0
// The lines of a password file that stay when a user goes.
#pragma once

#include <stdio.h>
#include <stdlib.h>

#include <string_view>

namespace kestrove {

class KeptLines {
 public:
  static constexpr size_t kLimit = 1024 * 1024;

  KeptLines() = default;
  ~KeptLines() { free(data_); }
  KeptLines(const KeptLines&) = delete;
  KeptLines& operator=(const KeptLines&) = delete;

  // Gathers every line whose name, the text before the first colon, is another one; lines without a colon too. A last
  // line without a newline is lost. False when the file cannot be read or the lines take more than the limit.
  [[nodiscard]] bool gather(FILE* file, std::string_view name);

  const char* data() const { return data_; }
  size_t size() const { return size_; }

 private:
  [[nodiscard]] bool keep(std::string_view line);
  [[nodiscard]] bool grow(size_t size);

  char* data_ = nullptr;
  size_t size_ = 0;
  size_t capacity_ = 0;
};

}  // namespace kestrove
