// SPDX-License-Identifier: Apache-2.0
// What an item accepts, in words: built from the numbers of its row while compiling.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

namespace ctl {

// One of several values, with its word where it has one.
struct Choice {
  constexpr Choice(uint32_t number, const char* name = "") : value(number), word(name) {}
  uint32_t value;
  const char* word;
};

// A text too long for it does not compile.
class ItemRange {
 public:
  constexpr ItemRange(const char* words = "") { add(words); }
  constexpr operator const char*() const { return text_; }

  constexpr ItemRange& add(const char* words) {
    for (; *words; ++words) text_[length_++] = *words;
    return *this;
  }
  constexpr ItemRange& add(uint32_t number) {
    if (number >= 10) add(number / 10);
    text_[length_++] = static_cast<char>('0' + number % 10);
    return *this;
  }

 private:
  char text_[48] = {};
  size_t length_ = 0;
};

constexpr ItemRange within(uint32_t low, uint32_t high) { return ItemRange().add(low).add("..").add(high); }

constexpr ItemRange upTo(uint32_t high, const char* lowField) { return ItemRange(lowField).add("..").add(high); }

constexpr ItemRange oneOf(std::initializer_list<Choice> choices) {
  ItemRange range;
  for (const Choice& choice : choices) {
    range.add(*range ? ", " : "").add(choice.value);
    if (*choice.word) range.add(" (").add(choice.word).add(")");
  }
  return range;
}

}  // namespace ctl
