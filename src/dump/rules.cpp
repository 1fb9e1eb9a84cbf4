// SPDX-License-Identifier: Apache-2.0
// The policy rules, two lines of columns each, put together by hand: a full dump has eight thousand of them. IPv6
// addresses, too long for a column, follow on lines of their own.
#include "dump/print.h"
#include "dump/sections.h"
#include "kestrove/codes.h"
#include "store/bounds.h"
#include "store/codes.h"

namespace kestrove {
namespace {

using sys::putText;
using Text = std::string_view;

// Every line of a rule has these columns.
constexpr char kColumns[] = "%-5.5s %-15.15s %-15.15s %-5.5s %-6.6s %-6.6s %-4.4s %-6.6s %-5.5s %12.12s %12.12s\n";
constexpr size_t kBehindPorts = 4 + 1 + 6 + 1 + 5 + 1 + 12 + 1 + 12;
constexpr size_t kLongestBlock = 512;

// "%-*.*s ": what does not fit is overwritten by the blank and the next column.
template <size_t Width, typename Put>
char* putCut(char* at, Put put) {
  memset(at, ' ', Width);
  put(at);
  at[Width] = ' ';
  return at + Width + 1;
}

template <size_t Width>
char* putCutText(char* at, Text text) {
  return putCut<Width>(at, [text](char* place) { return putText(place, text.substr(0, Width)); });
}

template <size_t Width>
char* putCutNumber(char* at, int32_t value) {
  return putCut<Width>(at, [value](char* place) { return sys::putNumber(place, value); });
}

char* putCutQuad(char* at, uint32_t address) {
  return putCut<15>(at, [address](char* place) { return sys::putQuad(place, address); });
}

Text nameOf(const MessageTable& names, uint32_t code) { return shm_getMessage(&names, static_cast<int>(code)); }

// Source and destination, or masks, of a rule for IPv4 or any family.
char* putQuads(char* at, const FilterRule& rule, uint32_t source, uint32_t destination) {
  if (rule.ipVersion == SHM_FAMILY_IPV6) return putCutText<15>(putCutText<15>(at, ""), "");
  return putCutQuad(putCutQuad(at, source), destination);
}

char* putFamily(char* at, uint32_t ipVersion) {
  return putCutText<5>(at, ipVersion == 4 ? "4" : ipVersion == SHM_FAMILY_IPV6 ? "6" : "Any");
}

char* putProtocol(char* at, uint32_t proto) {
  switch (proto) {
    case 0: return putCutText<5>(at, "ANY");
    case 6: return putCutText<5>(at, "TCP");
    case 17: return putCutText<5>(at, "UDP");
    default: return putCutNumber<5>(at, static_cast<int32_t>(proto));
  }
}

char* putTarget(char* at, int32_t target) {
  if (target == 0) return putCutText<6>(at, "DROP");
  return target == -1 ? putCutText<6>(at, "BRIDGE") : putCutNumber<6>(at, target);
}

char* putBandwidth(char* at, int32_t bandwidth) {
  char digits[sys::kLongestNumber];
  const char* end = sys::putNumber(digits, bandwidth);
  return sys::putTextRight<12>(at, {digits, static_cast<size_t>(end - digits)});
}

char* putFirstLine(char* at, const FilterRule& rule, int32_t position) {
  at = putCutNumber<5>(at, position);
  at = putQuads(at, rule, rule.srcAddr, rule.dstAddr);
  at = putProtocol(at, rule.proto);
  at = putCutNumber<6>(at, rule.srcPort);
  at = putCutNumber<6>(at, rule.destPort);
  at = putCutNumber<4>(at, rule.priority);
  at = putTarget(at, rule.target);
  at = putCutText<5>(at, nameOf(kOperationalStateNames, rule.accel));
  at = putText(putBandwidth(at, rule.bandwidth), " ");
  return putText(sys::putTextRight<12>(at, nameOf(kRowStatusNames, rule.ruleAction).substr(0, 12)), "\n");
}

char* putSecondLine(char* at, const FilterRule& rule) {
  at = putFamily(at, rule.ipVersion);
  at = putQuads(at, rule, rule.srcMask, rule.dstMask);
  at = putCutText<5>(at, "");
  at = putCutNumber<6>(at, rule.srcPortEnd);
  at = putCutNumber<6>(at, rule.destPortEnd);
  memset(at, ' ', kBehindPorts);
  return putText(at + kBehindPorts, "\n");
}

char* putSubnet6(char* at, Text label, const uint8_t* address, uint32_t prefixLength) {
  at = putText(sys::putIp6(putText(at, label), address), "/");
  return putText(sys::putNumber(at, static_cast<int32_t>(prefixLength)), "\n");
}

char* putRule(char* at, const FilterRule& rule, int32_t position) {
  at = putSecondLine(putFirstLine(at, rule, position), rule);
  if (rule.ipVersion != SHM_FAMILY_IPV6) return at;
  at = putSubnet6(at, "      srcAddr6: ", rule.srcAddr6, rule.srcPrefixLen6);
  return putSubnet6(at, "      dstAddr6: ", rule.dstAddr6, rule.dstPrefixLen6);
}

}  // namespace

void dumpRules(sys::TextWriter& out) {
  const FilterTable& table = shm->filterTable;
  print(out, "  ruleCount: \t\t%d\n", table.ruleCount);
  print(out, kColumns, "order", "srcAddr", "dstAddr", "proto", "srcPort", "destPort", "priority", "target", "accel",
        "bandwidth", "ruleAction");
  print(out, kColumns, "ipVersion", "srcMask", "dstMask", "", "to", "to", "", "", "", "", "");
  int count = boundedCount(table.ruleCount, SHM_RULES);
  for (int i = 0; i < count; ++i) {
    if (i > 0) out.text("\n");
    out.advance(putRule(out.room(kLongestBlock), table.rule[i], i + 1));
  }
}

}  // namespace kestrove
