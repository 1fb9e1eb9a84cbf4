// SPDX-License-Identifier: Apache-2.0
// Text gathered in one buffer and handed on in large pieces.
#pragma once

#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <string_view>

#include "sys/format.h"

namespace kestrove::sys {

// A FILE as the target of a TextWriter.
struct StreamTarget {
  FILE* stream;
  bool write(const char* data, size_t size) { return fwrite(data, 1, size, stream) == size; }
};

// Gathers text in a buffer of its own (64 KiB: put it on the stack, not in a recursion) and hands it to a target's
// `bool write(const char*, size_t)` whenever it is full. A target that fails once gets nothing more; good() tells.
// Nothing is handed over at the end of its life: call flush().
class TextWriter {
 public:
  static constexpr size_t kCapacity = 64 * 1024;

  template <typename Target>
  explicit TextWriter(Target& target) : target_(&target), write_(&writeTo<Target>) {}
  TextWriter(const TextWriter&) = delete;
  TextWriter& operator=(const TextWriter&) = delete;

  // A cursor with room for size bytes, at most kCapacity, for the functions of sys/format.h; advance() takes what was
  // written there.
  char* room(size_t size) {
    if (kCapacity - used_ < size) static_cast<void>(flush());  // good() remembers a failure
    return buffer_ + used_;
  }
  void advance(const char* end) { used_ = static_cast<size_t>(end - buffer_); }

  void text(std::string_view text) {
    for (; text.size() > kCapacity; text.remove_prefix(kCapacity)) piece(text.substr(0, kCapacity));
    piece(text);
  }
  void number(int32_t value) { advance(putNumber(room(kLongestNumber), value)); }
  void quad(uint32_t address) { advance(putQuad(room(kLongestQuad), address)); }

  [[nodiscard]] bool flush() {
    if (good_ && used_ > 0) good_ = write_(target_, buffer_, used_);
    used_ = 0;
    return good_;
  }
  [[nodiscard]] bool good() const { return good_; }

 private:
  template <typename Target>
  static bool writeTo(void* target, const char* data, size_t size) {
    return static_cast<Target*>(target)->write(data, size);
  }
  void piece(std::string_view text) { advance(putText(room(text.size()), text)); }

  void* target_;
  bool (*write_)(void*, const char*, size_t);
  bool good_ = true;
  size_t used_ = 0;
  char buffer_[kCapacity];
};

}  // namespace kestrove::sys
