// SPDX-License-Identifier: Apache-2.0
// The script lines of rules, routes and addresses.
#include "kestrove/codes.h"
#include "kestrove/segment.h"
#include "state/script.h"
#include "store/bounds.h"
#include "store/slots.h"

namespace kestrove {
namespace {

using sys::TextWriter;

// What may stand in one line of a rule with all its parts, so that the room is asked for once.
constexpr size_t kLongestRule = 512;

struct ProtocolWord {
  uint32_t number;
  std::string_view word;
};
constexpr ProtocolWord kProtocolWords[] = {{0, "ANY "}, {6, "TCP "}, {17, "UDP "}};

// The words of a line are literals of a known size, so that copying them is a move or two.
template <size_t N>
char* putWords(char* at, const char (&words)[N]) {
  return sys::putText(at, {words, N - 1});
}

// A number behind its option, with the blank that ends every part of a line.
template <size_t N>
char* putOption(char* at, const char (&option)[N], int32_t value) {
  return putWords(sys::putNumber(putWords(at, option), value), " ");
}

template <size_t N>
char* putSubnet(char* at, const char (&option)[N], uint32_t address, uint32_t mask) {
  if (mask == 0) return at;
  at = sys::putQuad(putWords(at, option), address);
  at = sys::putQuad(putWords(at, "/"), mask);
  return putWords(at, " ");
}

template <size_t N>
char* putPrefix(char* at, const char (&option)[N], const uint8_t* address, uint32_t length) {
  at = sys::putIp6(putWords(at, option), address);
  return putOption(at, "/", static_cast<int32_t>(length));
}

char* putAddresses(char* at, const FilterRule& rule) {
  if (rule.ipVersion == 6) {
    at = putPrefix(putWords(at, "-ipVersion 6 "), "-sa6 ", rule.srcAddr6, rule.srcPrefixLen6);
    return putPrefix(at, "-da6 ", rule.dstAddr6, rule.dstPrefixLen6);
  }
  if (rule.ipVersion == 4) {
    at = putSubnet(putWords(at, "-ipVersion 4 "), "-sa ", rule.srcAddr, rule.srcMask);
    return putSubnet(at, "-da ", rule.dstAddr, rule.dstMask);
  }
  return putWords(at, "-ipVersion Any ");
}

template <size_t N, size_t M>
char* putPortRange(char* at, const char (&option)[N], int32_t first, const char (&endOption)[M], int32_t last) {
  at = putOption(at, option, first);
  return last == first ? at : putOption(at, endOption, last);
}

// Without a source port the destination port is left out, too: the format that the command line knows.
char* putProtocol(char* at, const FilterRule& rule) {
  at = putWords(at, "-proto ");
  for (const ProtocolWord& row : kProtocolWords) {
    if (row.number == rule.proto) at = sys::putText(at, row.word);
  }
  if (rule.proto == 0 || rule.srcPort == 0) return at;
  at = putPortRange(at, "-srcPort ", rule.srcPort, "-srcPortEnd ", rule.srcPortEnd);
  return putPortRange(at, "-destPort ", rule.destPort, "-destPortEnd ", rule.destPortEnd);
}

char* putTarget(char* at, const FilterRule& rule) {
  if (rule.target == 0) return putWords(at, "-d ");
  if (rule.target == -1) return putWords(at, "-b ");
  at = putOption(at, "-p ", rule.priority);
  if (rule.target < 1) return at;
  at = putOption(at, "-bw ", rule.bandwidth / 1000);
  return rule.accel == SHM_ON ? at : putWords(at, " -noAccel ");
}

char* putRule(char* at, int number, const FilterRule& rule) {
  at = putOption(at, "rule add ", number);
  at = putTarget(putProtocol(putAddresses(at, rule), rule), rule);
  if (rule.ruleAction == SHM_RULE_NIS) at = putWords(at, "-NIS ");
  return putWords(at, "\n");
}

void endRoute(TextWriter& out, uint32_t status) { out.text(status == SHM_ROUTE_DISABLED ? "-n\n" : "\n"); }

void writeIp6(TextWriter& out, const uint8_t* address) {
  out.advance(sys::putIp6(out.room(sys::kLongestIp6), address));
  out.text(" ");
}

void writeQuad(TextWriter& out, uint32_t address) {
  out.quad(address);
  out.text(" ");
}

}  // namespace

void writeRoute(TextWriter& out, const RouteEntry& route) {
  out.text("route add ");
  writeQuad(out, route.destination);
  writeQuad(out, route.netmask);
  writeQuad(out, route.gateway);
  endRoute(out, route.status);
}

void writeRoute6(TextWriter& out, const Route6Entry& route) {
  out.text("route6 add ");
  writeIp6(out, route.destination);
  out.number(static_cast<int32_t>(route.prefixLength));
  out.text(" ");
  writeIp6(out, route.gateway);
  endRoute(out, route.status);
}

void writeRoutes(TextWriter& out) {
  eachInOrder(shm->routes.slot, shm->routes.head, [&](const RouteEntry& route) {
    writeRoute(out, route);
    return true;
  });
}

void writeRoutes6(TextWriter& out) {
  eachInOrder(shm->routes6.slot, shm->routes6.head6, [&](const Route6Entry& route) {
    writeRoute6(out, route);
    return true;
  });
}

// The last rule, the default one, is there in every table and is never written.
void writeRules(TextWriter& out) {
  int last = ruleEntries(*shm) - 1;
  for (int position = 0; position < last; ++position) {
    out.advance(putRule(out.room(kLongestRule), position + 1, shm->filterTable.rule[position]));
  }
}

}  // namespace kestrove
