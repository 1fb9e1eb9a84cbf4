// One line of the configuration file, column by column.
#pragma once

#include "sys/text_writer.h"

namespace kestrove {

// The keyword in 25 columns, then columns with a blank before each. end() closes the line.
class LineWriter {
 public:
  LineWriter(sys::TextWriter& out, std::string_view keyword)
      : out_(out), at_(sys::putTextColumn<25>(out.room(kLongestLine), keyword)) {}

  template <size_t Width = 0>
  LineWriter& number(int32_t value) {
    at_ = sys::putNumberColumn<Width>(blank(), value);
    return *this;
  }
  LineWriter& number(uint32_t value) { return number(static_cast<int32_t>(value)); }
  template <size_t Width>
  LineWriter& number(uint32_t value) {
    return number<Width>(static_cast<int32_t>(value));
  }
  // Without a blank before it.
  template <size_t Width>
  LineWriter& adjacent(int32_t value) {
    at_ = sys::putNumberColumn<Width>(at_, value);
    return *this;
  }
  template <size_t Width = 0>
  LineWriter& quad(uint32_t address) {
    at_ = sys::putQuadColumn<Width>(blank(), address);
    return *this;
  }
  template <size_t Width>
  LineWriter& address6(const uint8_t* address) {
    at_ = sys::putIp6Column<Width>(blank(), address);
    return *this;
  }
  template <size_t Width = 0>
  LineWriter& text(std::string_view text) {
    at_ = sys::putTextColumn<Width>(blank(), text);
    return *this;
  }
  template <size_t Width>
  LineWriter& textRight(std::string_view text) {
    at_ = sys::putTextRight<Width>(blank(), text);
    return *this;
  }
  LineWriter& emptyColumn() {
    blank();
    return *this;
  }
  void end() {
    *at_++ = '\n';
    out_.advance(at_);
  }

 private:
  static constexpr size_t kLongestLine = 512;

  char* blank() {
    *at_++ = ' ';
    return at_;
  }

  sys::TextWriter& out_;
  char* at_;
};

}  // namespace kestrove
