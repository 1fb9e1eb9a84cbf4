// SPDX-License-Identifier: Apache-2.0
// What the words of a configuration line mean.
#pragma once

#include <stdint.h>

#include "kestrove/layout.h"

namespace kestrove {

inline bool separates(char c) { return c == ' ' || c == '\t' || c == '\n'; }

// Decimal text, as strtol with a 32-bit long converts it on every machine: blanks and a sign may lead, the first other
// character ends it, no digits give 0, what is too large gives the largest.
int32_t numberOf(const char* text);

// A switch of the file as the store holds it.
constexpr uint8_t storedSwitch(int32_t value) { return value == 1 ? SHM_ON : value == 0 ? SHM_OFF : 3; }

// And back. For an account any other value is 2; a keyword's line is only written for 1 to 3.
constexpr int32_t fileSwitch(int32_t stored) { return stored == SHM_ON ? 1 : stored == SHM_OFF ? 0 : 2; }

// A dotted quad; the text may be rewritten. False, with the code set and the address left alone, when it is none.
[[nodiscard]] bool readAddress(char* text, uint32_t* address);

// The columns of a row, split in place at tab, blank and newline. When the row has ended the getters give nothing and
// complete() is false.
class Columns {
 public:
  explicit Columns(char* value) : at_(value) {}

  [[nodiscard]] bool complete() const { return complete_; }
  char* word();  // null when the row has ended
  int32_t number();
  uint32_t address();               // 0 when it is none
  void address6(uint8_t* address);  // left alone when it is none

 private:
  [[nodiscard]] bool begin();  // of the next word; false when the row has ended
  void end(const char* end);

  char* at_;
  bool complete_ = true;
};

}  // namespace kestrove
