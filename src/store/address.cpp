// SPDX-License-Identifier: Apache-2.0
// IPv4 and IPv6 addresses, masks and prefixes as text and as numbers.
#include <arpa/inet.h>
#include <stdio.h>
#include <string.h>

#include "kestrove/text.h"
#include "store/fail.h"

namespace kestrove {
namespace {

constexpr int kOctets = 4;
constexpr int kAddressBits = 32;
constexpr int kLongestSubnet = 19;  // "255.255.255.255/32" and its terminator
constexpr uint32_t kLastUnicast = 0xDFFFFFFFu;
constexpr uint32_t kLoopbackNetwork = 127;

// The value of an octet's text; -1 when it is empty, holds anything but digits, or exceeds 255.
int octetValue(const char* text, const char* end) {
  if (text == end) return -1;
  int value = 0;
  for (; text != end; ++text) {
    if (*text < '0' || *text > '9') return -1;
    value = value * 10 + (*text - '0');
    if (value > 255) return -1;
  }
  return value;
}

// Puts the plain digits of an octet in place of its text and closes the string up behind it; returns their end.
char* rewriteOctet(char* text, char* end, int value) {
  char digits[4];
  size_t length = static_cast<size_t>(snprintf(digits, sizeof digits, "%d", value));
  memcpy(text, digits, length);
  if (text + length != end) memmove(text + length, end, strlen(end) + 1);
  return text + length;
}

// Octet by octet: what stands before a bad one is already rewritten when it is found.
int canonicalizeIpv4Text(char* text) {
  if (!*text) return 0;  // left to the conversion, which refuses it
  for (int i = 0; i < kOctets; ++i) {
    bool last = i == kOctets - 1;
    char* end = last ? text + strlen(text) : strchr(text, '.');
    if (!end) return fail(SHM_EDOTS);
    int value = octetValue(text, end);
    if (value < 0) return fail(SHM_EOCTET);
    text = rewriteOctet(text, end, value) + 1;
  }
  return 0;
}

// Ones from the top and zeros behind them: the complement is one less than a power of two.
bool contiguous(uint32_t mask) { return (~mask & (~mask + 1)) == 0; }

bool unicast(uint32_t address) {
  uint32_t host = ntohl(address);
  return host != 0 && host <= kLastUnicast && host >> 24 != kLoopbackNetwork;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int parseIpv4Address(char* text, uint32_t* out) {
  if (!text || !out) return fail(SHM_EINVAL);
  if (canonicalizeIpv4Text(text) != 0) return -1;
  in_addr address;
  if (!inet_aton(text, &address)) return fail(SHM_EINVAL);
  *out = address.s_addr;
  return 0;
}

// The code is that of an invalid argument, not that of a bad mask: kept on purpose.
int validateNetmask(const uint32_t* mask) {
  if (!mask) return fail(SHM_EINVAL);
  uint32_t word;
  memcpy(&word, mask, sizeof word);
  return contiguous(ntohl(word)) ? 0 : fail(SHM_EINVAL);
}

int validateManagementAddress(char* text, uint32_t* out) {
  if (!text || !out) return fail(SHM_EINVAL);
  uint32_t address = 0;
  bool parsed = parseIpv4Address(text, &address) == 0;
  bool usable = parsed && unicast(address);
  *out = usable ? address : 0;  // last: the output may lie over the text
  if (parsed && !usable) return fail(SHM_EINVAL);
  return usable ? 0 : -1;
}

int parseIpv6Address(const char* text, void* out16) {
  if (!text || !out16) return fail(SHM_EINVAL);
  return inet_pton(AF_INET6, text, out16) == 1 ? 0 : fail(SHM_EIPV6);
}

const char* ipv4_to_a(uint32_t addr) { return inet_ntoa({addr}); }

// A buffer that might not hold the longest text fails even where the text at hand fits.
int ipv6_to_a(const void* addr16, char* buf, int len) {
  if (!addr16 || !buf) return fail(SHM_EINVAL);
  if (len <= 0) return -1;
  const char* text = inet_ntop(AF_INET6, addr16, buf, static_cast<socklen_t>(len));
  return !text || len < INET6_ADDRSTRLEN ? -1 : 0;
}

// An all-zero mask has no number here.
int netMaskCIDRNumber(uint32_t mask) {
  uint32_t holes = ~ntohl(mask);
  bool contiguous = (holes & (holes + 1)) == 0;
  return mask && contiguous ? kAddressBits - __builtin_popcount(holes) : -1;
}

int getCIDRSubnet(uint32_t addr, uint32_t mask, char* dst, int len) {
  if (!dst) return fail(SHM_EINVAL);
  int prefix = netMaskCIDRNumber(mask);
  if (prefix == -1 || len < kLongestSubnet) return -1;
  snprintf(dst, static_cast<size_t>(len), "%s/%d", ipv4_to_a(addr & mask), prefix);
  return 0;
}
