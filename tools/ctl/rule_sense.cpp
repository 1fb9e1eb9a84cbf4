// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/rule_sense.h"

#include "tools/ctl/rule_setting.h"
#include "tools/ctl/vocabulary.h"

namespace ctl {
namespace {

constexpr int kLastPort = 65535;

std::string senselessRange(int first, int last, const std::string& option) {
  for (const int port : {first, last}) {
    if (port < 0 || port > kLastPort)
      return std::to_string(port) + ": no port (0 to 65535, or two with a dash between)";
  }
  if (first == 0 && last != 0) return option + "-end goes with a first port (" + option + ")";
  if (last >= first) return {};
  return "ports " + std::to_string(first) + " to " + std::to_string(last) + " run backwards (" + option + ", " +
         option + "-end)";
}

struct RuleNumber {
  uint32_t (*of)(const FilterRule&);
  Vocabulary words;
  uint32_t below;  // without a word, too
  const char* meant;
};

constexpr RuleNumber kNumbers[] = {
    {[](const FilterRule& rule) { return rule.ipVersion; }, kScriptFamilies, 0, "address family (4 or 6)"},
    {[](const FilterRule& rule) { return rule.proto; }, kProtocols, 256, "protocol (any, tcp, udp or 0 to 255)"},
    {[](const FilterRule& rule) { return static_cast<uint32_t>(rule.target); }, kTargets, 0,
     "target (accelerate, bridge or drop)"},
    {[](const FilterRule& rule) { return rule.accel; }, kSwitches, 0, "switch (on or off)"},
    {[](const FilterRule& rule) { return rule.ruleAction; }, kRuleStatus, 1000, "status (active, nis or invalid)"}};

bool hasWord(Vocabulary words, uint32_t value) {
  for (const NamedNumber& word : words) {
    if (static_cast<uint32_t>(word.number) == value) return true;
  }
  return false;
}

}  // namespace

std::string senselessPorts(const FilterRule& rule) {
  std::string wrong = senselessRange(rule.srcPort, rule.srcPortEnd, "--sport");
  if (wrong.empty()) wrong = senselessRange(rule.destPort, rule.destPortEnd, "--dport");
  const bool ports = rule.srcPort != 0 || rule.destPort != 0;
  const bool carried = rule.proto == SHM_PROTO_TCP || rule.proto == SHM_PROTO_UDP;
  return wrong.empty() && ports && !carried ? "ports go with --proto tcp or udp" : wrong;
}

std::string senselessNumber(const FilterRule& rule, const FilterRule& other) {
  for (const RuleNumber& number : kNumbers) {
    const uint32_t value = number.of(rule);
    if (value == number.of(other) || value < number.below || hasWord(number.words, value)) continue;
    return std::to_string(value) + ": no " + number.meant;
  }
  return {};
}

bool isSenseless(const FilterRule& rule) {
  return !senselessPorts(rule).empty() || !senselessNumber(rule, freshRule()).empty();
}

}  // namespace ctl
