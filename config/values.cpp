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
const char* readOctet(const char* at, uint8_t* octet) {
  unsigned value = 0;
  const char* start = at;
  while (digit(*at) && at - start < 3) value = value * 10 + static_cast<unsigned>(*at++ - '0');
  *octet = static_cast<uint8_t>(value);
  return at > start && value <= kLargestOctet ? at : nullptr;
}

// The quick way for the thousands of addresses of a file; whatever it does not know is left to the strict parser.
bool readOrdinaryAddress(const char* text, uint32_t* address) {
  uint8_t octet[kOctets];
  for (int i = 0; i < kOctets; ++i) {
    text = readOctet(text, &octet[i]);
    if (!text || *text++ != (i < kOctets - 1 ? '.' : '\0')) return false;
  }
  memcpy(address, octet, sizeof octet);
  return true;
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

char* Columns::word() {
  while (separates(*at_)) ++at_;
  if (*at_ == '\0') {
    complete_ = false;
    return nullptr;
  }
  char* word = at_;
  while (*at_ != '\0' && !separates(*at_)) ++at_;
  if (*at_ != '\0') *at_++ = '\0';
  return word;
}

int32_t Columns::number() {
  const char* text = word();
  return text ? numberOf(text) : 0;
}

uint32_t Columns::address() {
  uint32_t address = 0;
  char* text = word();
  if (text) readAddress(text, &address);
  return address;
}

void Columns::address6(uint8_t* address) {
  const char* text = word();
  if (text) parseIpv6Address(text, address);
}

}  // namespace kestrove
