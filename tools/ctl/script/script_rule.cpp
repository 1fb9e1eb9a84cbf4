// SPDX-License-Identifier: Apache-2.0
// The rules of a saved script. Whatever the store may hold of a rule is taken here as it stands: ports that run
// backwards, ports of a protocol that the script has no word for.
#include <cstring>
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/ctl/rule_setting.h"
#include "tools/ctl/script/script_rows.h"

namespace ctl {
namespace {

constexpr int kBitsPerKilobit = 1000;

struct ScriptRule {
  int number = 0;
  std::optional<uint32_t> family, protocol;
  std::optional<Prefix> source, destination, source6, destination6;
  std::optional<int> sourcePort, sourcePortEnd, destinationPort, destinationPortEnd, priority, kilobits;
  bool drop = false;
  bool bridge = false;
  bool noAcceleration = false;
  bool notInService = false;
};

void setPorts(int32_t& first, int32_t& last, const std::optional<int>& start, const std::optional<int>& end) {
  first = start.value_or(0);
  last = end.value_or(first);
}

void refuseContradictions(const ScriptRule& line, uint32_t family) {
  if ((line.source || line.destination) && family != SHM_FAMILY_IPV4) {
    throw Refusal(kUsage, "-sa and -da go with -ipVersion 4");
  }
  if ((line.source6 || line.destination6) && family != SHM_FAMILY_IPV6) {
    throw Refusal(kUsage, "-sa6 and -da6 go with -ipVersion 6");
  }
  if (line.drop && line.bridge) throw Refusal(kUsage, "-d drops and -b bridges: a rule does one of them");
}

uint32_t familyOf(const ScriptRule& line) {
  if (line.family) return *line.family;
  return line.source6 || line.destination6 ? uint32_t{SHM_FAMILY_IPV6} : uint32_t{SHM_FAMILY_IPV4};
}

void setSubnet(uint32_t& address, uint32_t& mask, const std::optional<Prefix>& end) {
  if (!end) return;
  address = end->host.address;
  mask = end->mask;
}

void setPrefix(uint8_t (&address)[16], uint32_t& length, const std::optional<Prefix>& end) {
  if (!end) return;
  memcpy(address, end->host.address6, sizeof address);
  length = end->length6;
}

void setEnds(FilterRule& rule, const ScriptRule& line) {
  setSubnet(rule.srcAddr, rule.srcMask, line.source);
  setSubnet(rule.dstAddr, rule.dstMask, line.destination);
  setPrefix(rule.srcAddr6, rule.srcPrefixLen6, line.source6);
  setPrefix(rule.dstAddr6, rule.dstPrefixLen6, line.destination6);
}

FilterRule ruleOf(const ScriptRule& line) {
  FilterRule rule = freshRule();
  rule.ipVersion = familyOf(line);
  refuseContradictions(line, rule.ipVersion);
  setEnds(rule, line);
  rule.proto = line.protocol.value_or(SHM_PROTO_ANY);
  setPorts(rule.srcPort, rule.srcPortEnd, line.sourcePort, line.sourcePortEnd);
  setPorts(rule.destPort, rule.destPortEnd, line.destinationPort, line.destinationPortEnd);
  rule.target = line.drop ? SHM_TARGET_DROP : line.bridge ? SHM_TARGET_BRIDGE : SHM_TARGET_ACCELERATE;
  rule.priority = line.priority.value_or(rule.priority);
  rule.bandwidth = line.kilobits.value_or(0) * kBitsPerKilobit;
  if (line.noAcceleration) rule.accel = SHM_OFF;
  if (line.notInService) rule.ruleAction = SHM_RULE_NIS;
  return rule;
}

RuleWish wished(const ScriptRule& line) {
  if (line.number < 1) throw Refusal(kUsage, std::to_string(line.number) + ": rules of a script are numbered from 1");
  return {line.number - 1, ruleOf(line)};
}

void add(const Session& session, const ScriptRule& line) { insertRule(session, wished(line)); }

Wish wish(const ScriptRule& line) { return wished(line); }

// A protocol that a script has no word for leaves the option without one.
Argument<ScriptRule> protocol() {
  Argument<ScriptRule> made = option("-proto", &ScriptRule::protocol, takes::word(kScriptProtocols), "Protocol");
  made.wordless = true;
  return made;
}

std::vector<Argument<ScriptRule>> ends() {
  const Type four = takes::prefix(Family::kIpv4);
  const Type six = takes::prefix(Family::kIpv6);
  return {option("-ipVersion", &ScriptRule::family, takes::word(kScriptFamilies), "Address family"),
          option("-sa", &ScriptRule::source, four, "IPv4 source, with its mask"),
          option("-da", &ScriptRule::destination, four, "IPv4 destination, with its mask"),
          option("-sa6", &ScriptRule::source6, six, "IPv6 source, with its prefix length"),
          option("-da6", &ScriptRule::destination6, six, "IPv6 destination, with its prefix length")};
}

std::vector<Argument<ScriptRule>> traffic() {
  return {protocol(), option("-srcPort", &ScriptRule::sourcePort, takes::number(), "First source port"),
          option("-srcPortEnd", &ScriptRule::sourcePortEnd, takes::number(), "Last source port"),
          option("-destPort", &ScriptRule::destinationPort, takes::number(), "First destination port"),
          option("-destPortEnd", &ScriptRule::destinationPortEnd, takes::number(), "Last destination port")};
}

std::vector<Argument<ScriptRule>> treatment() {
  constexpr int kMost = INT32_MAX / kBitsPerKilobit;
  return {flag("-d", &ScriptRule::drop, "Drop"),
          flag("-b", &ScriptRule::bridge, "Bridge"),
          option("-p", &ScriptRule::priority, takes::number(), "Accelerate with this scheduling priority"),
          option("-bw", &ScriptRule::kilobits, takes::number(-kMost, kMost).in("kbit/s"), "Rate limit"),
          flag("-noAccel", &ScriptRule::noAcceleration, "Limit alone, accelerate nothing"),
          flag("-NIS", &ScriptRule::notInService, "Not in service")};
}

constexpr char kNumbers[] =
    "Rules of a script are numbered from 1, so the first line of a saved script makes rule 0 of rule list: a line with "
    "options of one dash counts from 1, one with options of two dashes from 0.";

}  // namespace

Command scriptRuleCommand() {
  const auto number = needed("NUMBER", &ScriptRule::number, takes::number(), "1 is the first rule");
  return ofScripts(setting("rule add", "Insert a rule in the words of a saved script", add, wish,
                           std::vector{number} + ends() + traffic() + treatment(), kNumbers));
}

}  // namespace ctl
