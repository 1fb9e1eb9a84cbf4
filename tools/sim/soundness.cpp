// SPDX-License-Identifier: Apache-2.0
#include "tools/sim/soundness.h"

#include <cstring>

namespace sim {
namespace {

using Findings = std::vector<std::string>;

bool allZero(const void* area, size_t size) {
  auto bytes = static_cast<const uint8_t*>(area);
  for (size_t i = 0; i < size; ++i) {
    if (bytes[i] != 0) return false;
  }
  return true;
}

void expect(bool holds, const std::string& otherwise, Findings& found) {
  if (!holds) found.push_back(otherwise);
}

bool knownCongestion(const EngineLink& link) {
  if (link.congestionMode == 0) return link.congestionFlagA == 0 && link.congestionFlagB == 0;
  return link.congestionMode == 2 && link.congestionFlagA + link.congestionFlagB <= 1;
}

void checkLink(const EngineLink& link, uint32_t side, Findings& found) {
  const std::string name = side == 0 ? "LAN" : "WAN";
  expect(link.side == side, name + " side is marked " + std::to_string(link.side), found);
  expect(knownCongestion(link), name + " congestion flags do not fit together", found);
  expect(allZero(link.reserved40, sizeof link.reserved40) && allZero(link.reserved68, sizeof link.reserved68) &&
             allZero(link.reserved114, sizeof link.reserved114),
         name + " reserved bytes are not zero", found);
}

void checkSwitch(uint32_t value, const char* name, Findings& found) {
  expect(value <= 1, std::string(name) + " is neither on nor off", found);
}

void checkRule(const FilterRule& rule, int number, Findings& found) {
  const std::string name = "rule " + std::to_string(number);
  expect(rule.order == static_cast<uint32_t>(number), name + " carries number " + std::to_string(rule.order), found);
  expect(rule.target <= 0 || rule.target == number, name + " has target " + std::to_string(rule.target), found);
}

void checkRules(const EngineConfiguration& block, Findings& found) {
  if (block.ruleCount < 0 || block.ruleCount > SHM_RULES) {
    found.push_back("impossible number of rules: " + std::to_string(block.ruleCount));
    return;
  }
  for (int i = 0; i < block.ruleCount; ++i) checkRule(block.rule[i], i + 1, found);
  const FilterRule* unused = block.rule + block.ruleCount;
  expect(allZero(unused, static_cast<size_t>(SHM_RULES - block.ruleCount) * sizeof *unused),
         "unused rules are not zero", found);
}

}  // namespace

std::vector<std::string> findings(const EngineConfiguration& block) {
  Findings found;
  checkLink(block.lan, 0, found);
  checkLink(block.wan, 1, found);
  expect(block.lan.mtu == block.wan.mtu, "the sides have different MTUs", found);
  checkSwitch(block.bridging, "bridging", found);
  checkSwitch(block.ipv6Support, "IPv6 support", found);
  checkSwitch(block.compression, "compression", found);
  checkSwitch(block.globalCongestion, "global congestion control", found);
  expect(block.constant8 == 8, "the constant is " + std::to_string(block.constant8), found);
  checkRules(block, found);
  expect(allZero(block.reserved852272, sizeof block.reserved852272) &&
             allZero(block.reserved852277, sizeof block.reserved852277),
         "reserved bytes are not zero", found);
  expect(memchr(block.ddupStartupOptions, 0, sizeof block.ddupStartupOptions) != nullptr,
         "the start options have no end", found);
  return found;
}

}  // namespace sim
