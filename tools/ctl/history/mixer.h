// SPDX-License-Identifier: Apache-2.0
// A sum that tells two stretches of memory apart, and finds what was damaged; not what somebody forged.
#pragma once

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>

namespace ctl {

// Word by word: the tables are more than half a megabyte, and so are their texts.
class Mixer {
 public:
  void take(const void* from, size_t length) {
    const char* bytes = static_cast<const char*>(from);
    for (size_t at = 0; at < length; at += sizeof(uint64_t)) {
      uint64_t word = 0;
      memcpy(&word, bytes + at, std::min(sizeof word, length - at));
      mix(word);
    }
    mix(length);
  }
  std::string text() const {
    char digits[17];
    snprintf(digits, sizeof digits, "%016" PRIx64, sum_);
    return digits;
  }

 private:
  void mix(uint64_t word) {
    sum_ = (sum_ ^ word) * 0x9e3779b97f4a7c15u;
    sum_ ^= sum_ >> 29;
  }

  uint64_t sum_ = 0xcbf29ce484222325u;
};

}  // namespace ctl
