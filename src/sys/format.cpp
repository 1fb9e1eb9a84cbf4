// SPDX-License-Identifier: Apache-2.0
#include "sys/format.h"

namespace kestrove::sys {
namespace {

constexpr int kGroups = 8;

struct Run {
  int first = -1;
  int length = 0;
};

// The first of the longest runs of zero groups; a single zero group is written out.
Run longestZeroRun(const uint16_t (&group)[kGroups]) {
  Run best;
  for (int i = 0; i < kGroups; ++i) {
    int start = i;
    while (i < kGroups && group[i] == 0) ++i;
    if (i - start > best.length) best = {start, i - start};
  }
  return best.length >= 2 ? best : Run{};
}

// IPv4-compatible and IPv4-mapped addresses end in a dotted quad.
bool endsInQuad(const Run& zeros, const uint16_t (&group)[kGroups]) {
  return zeros.first == 0 && (zeros.length == 6 || (zeros.length == 5 && group[5] == 0xffff));
}

char* putGroup(char* at, uint16_t value) {
  constexpr char kDigits[] = "0123456789abcdef";
  int shift = value > 0xfff ? 12 : value > 0xff ? 8 : value > 0xf ? 4 : 0;
  for (; shift >= 0; shift -= 4) *at++ = kDigits[(value >> shift) & 0xf];
  return at;
}

}  // namespace

char* putIp6(char* at, const uint8_t* address) {
  uint16_t group[kGroups];
  for (int i = 0; i < kGroups; ++i) group[i] = static_cast<uint16_t>(address[2 * i] << 8 | address[2 * i + 1]);
  Run zeros = longestZeroRun(group);
  for (int i = 0; i < kGroups; ++i) {
    if (i == zeros.first) {
      *at++ = ':';
      i += zeros.length - 1;
      if (i == kGroups - 1) *at++ = ':';
      continue;
    }
    if (i > 0) *at++ = ':';
    if (i == kGroups - 2 && endsInQuad(zeros, group)) {
      uint32_t quad;
      memcpy(&quad, address + 12, sizeof quad);
      return putQuad(at, quad);
    }
    at = putGroup(at, group[i]);
  }
  return at;
}

}  // namespace kestrove::sys
