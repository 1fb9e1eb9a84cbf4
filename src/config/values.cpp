// SPDX-License-Identifier: Apache-2.0
#include "config/values.h"

#include <string.h>

#include "kestrove/text.h"

namespace kestrove {
namespace {

constexpr unsigned kLargestOctet = 255;
constexpr int kOctets = 4;
constexpr uint32_t kLargestNumber = 0x7fffffff;

bool digit(char c) { return c >= '0' && c <= '9'; }
bool blank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// One to three digits up to 255, as an ordinary file has them.
[[nodiscard]] const char* readOctet(const char* at, uint8_t* octet) {
  unsigned value = 0;
  const char* start = at;
  while (digit(*at) && at - start < 3) value = value * 10 + static_cast<unsigned>(*at++ - '0');
  *octet = static_cast<uint8_t>(value);
  return at > start && value <= kLargestOctet ? at : nullptr;
}

// Where the quad ends; null for what is written in any other way, which is left to the strict parser.
[[nodiscard]] const char* readQuad(const char* text, uint32_t* address) {
  uint8_t octet[kOctets];
  for (int i = 0; i < kOctets; ++i) {
    if (i > 0 && *text++ != '.') return nullptr;
    text = readOctet(text, &octet[i]);
    if (!text) return nullptr;
  }
  memcpy(address, octet, sizeof octet);
  return text;
}

// The quick ways for the thousands of words of a file.
[[nodiscard]] bool readOrdinaryAddress(const char* text, uint32_t* address) {
  uint32_t quad;
  const char* end = readQuad(text, &quad);
  if (!end || *end != '\0') return false;
  *address = quad;
  return true;
}

bool endsWord(char c) { return c == '\0' || separates(c); }

// Nine digits fit whatever they are.
[[nodiscard]] const char* readOrdinaryNumber(const char* text, int32_t* number) {
  constexpr int kSureDigits = 9;
  int32_t value = 0;
  const char* start = text;
  while (digit(*text) && text - start < kSureDigits) value = value * 10 + (*text++ - '0');
  *number = value;
  return text > start && endsWord(*text) ? text : nullptr;
}

}  // namespace

int32_t numberOf(const char* text) {
  while (blank(*text)) ++text;
  bool negative = *text == '-';
  if (negative || *text == '+') ++text;
  uint32_t limit = kLargestNumber + negative;
  uint64_t magnitude = 0;
  for (; digit(*text); ++text) {
    magnitude = magnitude * 10 + static_cast<unsigned>(*text - '0');
    if (magnitude > limit) magnitude = limit;
  }
  auto word = static_cast<uint32_t>(magnitude);
  return static_cast<int32_t>(negative ? 0 - word : word);
}

bool readAddress(char* text, uint32_t* address) {
  return readOrdinaryAddress(text, address) || parseIpv4Address(text, address) == 0;
}

bool Columns::begin() {
  while (separates(*at_)) ++at_;
  if (*at_ == '\0') complete_ = false;
  return complete_;
}

// Takes the separator behind a word with it.
void Columns::end(const char* end) {
  at_ += end - at_;
  if (*at_ != '\0') *at_++ = '\0';
}

char* Columns::word() {
  if (!begin()) return nullptr;
  char* word = at_;
  char* behind = at_;
  while (!endsWord(*behind)) ++behind;
  end(behind);
  return word;
}

int32_t Columns::number() {
  if (!begin()) return 0;
  int32_t number;
  if (const char* behind = readOrdinaryNumber(at_, &number)) {
    end(behind);
    return number;
  }
  return numberOf(word());
}

uint32_t Columns::address() {
  if (!begin()) return 0;
  uint32_t address = 0;
  const char* behind = readQuad(at_, &address);
  if (behind && endsWord(*behind)) {
    end(behind);
    return address;
  }
  address = 0;
  static_cast<void>(readAddress(word(), &address));  // what is none stays 0
  return address;
}

void Columns::address6(uint8_t* address) {
  const char* text = word();
  if (text) parseIpv6Address(text, address);  // what is none leaves the bytes as they are
}

}  // namespace kestrove
