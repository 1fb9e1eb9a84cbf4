// SPDX-License-Identifier: Apache-2.0
// One line of the configuration file, column by column.
#pragma once

#include <string.h>

#include "sys/text_writer.h"

namespace kestrove {

// The beginning of every line of a keyword: the keyword in 25 columns, and blanks for the columns behind it. The widest
// row of columns fits into them; a single long text may go beyond.
class LineHead {
 public:
  explicit LineHead(std::string_view keyword) {
    memset(text_, ' ', size_);
    sys::putText(text_, keyword);
  }
  // Lays it down and gives the end of the keyword's column.
  char* begin(char* at) const {
    memcpy(at, text_, size_);
    return at + kWidth;
  }

 private:
  static constexpr size_t kWidth = 25;
  static constexpr size_t kSize = 288;

  size_t size_ = kSize;  // no constant: the compiler's own way to copy so much is the slower one
  char text_[kSize];
};

// One line: a head, then columns with a blank before each. end() closes the line.
class LineWriter {
 public:
  LineWriter(sys::TextWriter& out, const LineHead& head) : out_(out), at_(out.room(kLongestLine)) {
    at_ = head.begin(at_);
  }
  LineWriter(sys::TextWriter& out, std::string_view keyword) : LineWriter(out, LineHead(keyword)) {}

  template <size_t Width = 0>
  LineWriter& number(int32_t value) {
    ++at_;
    return adjacent<Width>(value);
  }
  template <size_t Width = 0>
  LineWriter& number(uint32_t value) {
    return number<Width>(static_cast<int32_t>(value));
  }
  // Without a blank before it.
  template <size_t Width>
  LineWriter& adjacent(int32_t value) {
    return close<Width>(at_, sys::putNumber(at_, value));
  }
  template <size_t Width = 0>
  LineWriter& quad(uint32_t address) {
    ++at_;
    return close<Width>(at_, sys::putQuad(at_, address));
  }
  template <size_t Width>
  LineWriter& address6(const uint8_t* address) {
    ++at_;
    return close<Width>(at_, sys::putIp6(at_, address));
  }
  template <size_t Width = 0>
  LineWriter& text(std::string_view text) {
    ++at_;
    return close<Width>(at_, sys::putText(at_, text));
  }
  // A word that fills its column.
  template <size_t Size>
  LineWriter& word(const char (&word)[Size]) {
    memcpy(++at_, word, Size - 1);
    at_ += Size - 1;
    return *this;
  }
  LineWriter& emptyColumn() {
    ++at_;
    return *this;
  }
  void end() {
    *at_++ = '\n';
    out_.advance(at_);
  }

 private:
  static constexpr size_t kLongestLine = 512;

  // A branch and no maximum: the next column need not wait for the digits of this one.
  template <size_t Width>
  LineWriter& close(char* start, char* end) {
    at_ = start + Width;
    if (end > at_) [[unlikely]]
      at_ = end;
    return *this;
  }

  sys::TextWriter& out_;
  char* at_;
};

}  // namespace kestrove
