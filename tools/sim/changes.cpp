// SPDX-License-Identifier: Apache-2.0
#include "tools/sim/changes.h"

#include <arpa/inet.h>

#include <cstddef>
#include <cstdio>
#include <cstring>

namespace sim {
namespace {

constexpr const char* kBitNames[32] = {
    "LAN rate",      "WAN rate", "LAN MTU", "WAN MTU", nullptr, "compression", "WAN congestion or interfaces",
    "rules",         nullptr,    nullptr,   "item 38", nullptr, nullptr,       "management address",
    "operating mode"};

enum class Kind { kNumber, kByte, kSwitch, kAddress, kName, kHardware, kIdentity, kOptions };

struct Setting {
  const char* label;
  Kind kind;
  size_t place;
};

#define PLACE(member) offsetof(EngineConfiguration, member)

constexpr Setting kSettings[] = {
    {"LAN interface", Kind::kName, PLACE(lan.interfaceName)},
    {"LAN send buffer", Kind::kNumber, PLACE(lan.sendBufferSize)},
    {"LAN receive buffer", Kind::kNumber, PLACE(lan.receiveBufferSize)},
    {"LAN rate", Kind::kNumber, PLACE(lan.linkRate)},
    {"LAN congestion mode", Kind::kNumber, PLACE(lan.congestionMode)},
    {"LAN TCP congestion", Kind::kSwitch, PLACE(lan.congestionFlagA)},
    {"LAN error tolerance", Kind::kSwitch, PLACE(lan.congestionFlagB)},
    {"LAN hardware address", Kind::kHardware, PLACE(lan.hardwareAddress)},
    {"WAN interface", Kind::kName, PLACE(wan.interfaceName)},
    {"WAN send buffer", Kind::kNumber, PLACE(wan.sendBufferSize)},
    {"WAN receive buffer", Kind::kNumber, PLACE(wan.receiveBufferSize)},
    {"WAN rate", Kind::kNumber, PLACE(wan.linkRate)},
    {"WAN congestion mode", Kind::kNumber, PLACE(wan.congestionMode)},
    {"WAN TCP congestion", Kind::kSwitch, PLACE(wan.congestionFlagA)},
    {"WAN error tolerance", Kind::kSwitch, PLACE(wan.congestionFlagB)},
    {"WAN hardware address", Kind::kHardware, PLACE(wan.hardwareAddress)},
    {"MTU", Kind::kNumber, PLACE(wan.mtu)},
    {"WAN round-trip time", Kind::kNumber, PLACE(wanIpDefaultRtt)},
    {"bridging", Kind::kSwitch, PLACE(bridging)},
    {"IPv6 support", Kind::kSwitch, PLACE(ipv6Support)},
    {"item 38", Kind::kNumber, PLACE(item38Value)},
    {"management address", Kind::kAddress, PLACE(managementAddress)},
    {"management mask", Kind::kAddress, PLACE(managementAddressMask)},
    {"gateway identifier", Kind::kIdentity, PLACE(gatewayId)},
    {"compression", Kind::kSwitch, PLACE(compression)},
    {"global congestion control", Kind::kSwitch, PLACE(globalCongestion)},
    {"interval", Kind::kNumber, PLACE(accumulationInterval)},
    {"single-interface mode", Kind::kByte, PLACE(singleInterfaceMode)},
    {"de-duplication method", Kind::kNumber, PLACE(ddupOperState)},
    {"de-duplication options", Kind::kOptions, PLACE(ddupStartupOptions)},
};
#undef PLACE

std::string hexadecimal(const uint8_t* bytes, size_t count, const char* between) {
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    char digits[4];
    snprintf(digits, sizeof digits, "%02x", bytes[i]);
    text += (i == 0 ? "" : between) + std::string(digits);
  }
  return text;
}

std::string quoted(const char* text, size_t width) { return '"' + std::string(text, strnlen(text, width)) + '"'; }

std::string addressText(uint32_t address) {
  char text[INET_ADDRSTRLEN];
  return inet_ntop(AF_INET, &address, text, sizeof text) ? text : "";
}

std::string valueOf(const Setting& setting, const EngineConfiguration& block) {
  const char* place = reinterpret_cast<const char*>(&block) + setting.place;
  auto bytes = reinterpret_cast<const uint8_t*>(place);
  uint32_t word;
  memcpy(&word, place, sizeof word);
  switch (setting.kind) {
    case Kind::kNumber: return std::to_string(word);
    case Kind::kByte: return std::to_string(*bytes);
    case Kind::kSwitch: return word == 1 ? "on" : "off";
    case Kind::kAddress: return addressText(word);
    case Kind::kName: return quoted(place, 16);
    case Kind::kHardware: return hexadecimal(bytes, 6, ":");
    case Kind::kIdentity: return hexadecimal(bytes, 4, "");
    case Kind::kOptions: return quoted(place, sizeof block.ddupStartupOptions);
  }
  return {};
}

int firstDifferentRule(const EngineConfiguration& before, const EngineConfiguration& after) {
  int shorter = before.ruleCount < after.ruleCount ? before.ruleCount : after.ruleCount;
  for (int i = 0; i < shorter; ++i) {
    if (memcmp(&before.rule[i], &after.rule[i], sizeof(FilterRule)) != 0) return i + 1;
  }
  return before.ruleCount == after.ruleCount ? 0 : shorter + 1;
}

}  // namespace

std::string namesOfBits(uint32_t bits) {
  std::string names;
  for (uint32_t bit = 0; bit < 32; ++bit) {
    if (!(bits & (1u << bit))) continue;
    if (!names.empty()) names += ", ";
    names += kBitNames[bit] ? kBitNames[bit] : "bit " + std::to_string(bit);
  }
  return names;
}

std::vector<std::string> differences(const EngineConfiguration& before, const EngineConfiguration& after) {
  std::vector<std::string> lines;
  for (const Setting& setting : kSettings) {
    std::string old = valueOf(setting, before), now = valueOf(setting, after);
    if (old != now) lines.push_back(std::string(setting.label) + ": " + old + " -> " + now);
  }
  if (int rule = firstDifferentRule(before, after); rule != 0) {
    lines.push_back("rules: " + std::to_string(before.ruleCount) + " -> " + std::to_string(after.ruleCount) +
                    ", from rule " + std::to_string(rule) + " on");
  }
  return lines;
}

}  // namespace sim
