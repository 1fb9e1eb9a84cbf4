// SPDX-License-Identifier: Apache-2.0
// Text at a cursor: the fixed columns of files and dumps, without the cost of a format string.
//
// Every function writes at the cursor and returns the place behind what it wrote. The caller sees to the room: a
// number takes at most kLongestNumber characters, a dotted quad kLongestQuad, an IPv6 address kLongestIp6 (all three
// count the two characters that may be scribbled over behind the text), a padded column its width if that is more.
#pragma once

#include <stdint.h>
#include <string.h>

#include <array>
#include <string_view>

namespace kestrove::sys {

constexpr size_t kLongestNumber = 22;
constexpr size_t kLongestQuad = 17;
constexpr size_t kLongestIp6 = 47;

namespace detail {

// The decimal digits of 0 to 255, filled up with blanks, and their number.
constexpr auto kOctets = [] {
  std::array<std::array<char, 4>, 256> table{};
  for (unsigned value = 0; value < 256; ++value) {
    unsigned at = 0;
    table[value] = {' ', ' ', ' ', '\0'};
    if (value >= 100) table[value][at++] = static_cast<char>('0' + value / 100);
    if (value >= 10) table[value][at++] = static_cast<char>('0' + value / 10 % 10);
    table[value][at++] = static_cast<char>('0' + value % 10);
    table[value][3] = static_cast<char>(at);
  }
  return table;
}();

}  // namespace detail

inline char* putText(char* at, std::string_view text) {
  memcpy(at, text.data(), text.size());
  return at + text.size();
}

template <typename Unsigned>
char* putUnsigned(char* at, Unsigned value) {
  char digits[kLongestNumber];
  char* first = digits + sizeof digits;
  do {
    *--first = static_cast<char>('0' + value % 10);
    value = static_cast<Unsigned>(value / 10);
  } while (value != 0);
  return putText(at, {first, static_cast<size_t>(digits + sizeof digits - first)});
}

inline size_t digitsOf(uint32_t value) {
  return 1u + (value >= 10) + (value >= 100) + (value >= 1000) + (value >= 10000) + (value >= 100000) +
         (value >= 1000000) + (value >= 10000000) + (value >= 100000000) + (value >= 1000000000);
}

// The common width, written in its place.
inline char* putUnsigned(char* at, uint32_t value) {
  char* end = at + digitsOf(value);
  char* digit = end;
  do {
    *--digit = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (digit != at);
  return end;
}

inline char* putOctet(char* at, uint8_t value) {
  const auto& digits = detail::kOctets[value];
  memcpy(at, digits.data(), 3);  // the blanks behind the digits are overwritten by whatever comes next
  return at + digits[3];
}

inline char* putNumber(char* at, int32_t value) {
  auto magnitude = static_cast<uint32_t>(value);
  if (value < 0) {
    *at++ = '-';
    magnitude = 0 - magnitude;
  }
  return magnitude > 255 ? putUnsigned(at, magnitude) : putOctet(at, static_cast<uint8_t>(magnitude));
}

// An IPv4 address in network byte order as a dotted quad.
inline char* putQuad(char* at, uint32_t address) {
  uint8_t octet[4];
  memcpy(octet, &address, sizeof octet);
  at = putOctet(at, octet[0]);
  *at++ = '.';
  at = putOctet(at, octet[1]);
  *at++ = '.';
  at = putOctet(at, octet[2]);
  *at++ = '.';
  return putOctet(at, octet[3]);
}

// An IPv6 address (16 bytes in network order), the very text that inet_ntop gives.
char* putIp6(char* at, const uint8_t* address);

// A left-aligned column of Width characters: what put writes at its cursor argument, over blanks. Longer text is not
// cut.
template <size_t Width, typename Put>
char* putColumn(char* at, Put put) {
  memset(at, ' ', Width);
  char* end = put(at);
  return end > at + Width ? end : at + Width;
}

template <size_t Width>
char* putTextColumn(char* at, std::string_view text) {
  return putColumn<Width>(at, [text](char* place) { return putText(place, text); });
}

template <size_t Width>
char* putNumberColumn(char* at, int32_t value) {
  return putColumn<Width>(at, [value](char* place) { return putNumber(place, value); });
}

template <size_t Width>
char* putQuadColumn(char* at, uint32_t address) {
  return putColumn<Width>(at, [address](char* place) { return putQuad(place, address); });
}

template <size_t Width>
char* putIp6Column(char* at, const uint8_t* address) {
  return putColumn<Width>(at, [address](char* place) { return putIp6(place, address); });
}

// A right-aligned column.
template <size_t Width>
char* putTextRight(char* at, std::string_view text) {
  size_t blanks = text.size() < Width ? Width - text.size() : 0;
  memset(at, ' ', blanks);
  return putText(at + blanks, text);
}

}  // namespace kestrove::sys
