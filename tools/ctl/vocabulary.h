// The words of kestrovectl that stand for numbers of the store: what is printed is what is taken.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "kestrove/layout.h"

namespace ctl {

struct NamedNumber {
  const char* name;
  int number;
};

using Vocabulary = std::span<const NamedNumber>;

inline constexpr NamedNumber kSwitches[] = {{"on", SHM_ON}, {"off", SHM_OFF}};
inline constexpr NamedNumber kProtocols[] = {{"any", 0}, {"tcp", 6}, {"udp", 17}};
inline constexpr NamedNumber kTargets[] = {{"accelerate", 1}, {"bridge", -1}, {"drop", 0}};
inline constexpr NamedNumber kRuleStatus[] = {{"undefined", 0}, {"invalid", 1}, {"nis", 2}, {"active", 3}};
inline constexpr NamedNumber kRouteStatus[] = {{"inactive", 1}, {"disabled", 2}, {"active", 3}};
inline constexpr NamedNumber kInterfaceKinds[] = {
    {"lan", 0}, {"wan", 1}, {"management", 3}, {"bridge", 4}, {"router", 5}};

// Ports by the number that their link status has.
inline constexpr NamedNumber kPorts[] = {{"lan", 5}, {"wan", 1}, {"management", 3}};

// Null where the words do not have it.
const NamedNumber* findName(Vocabulary words, const std::string& name);

// The word of a number, or the number itself where there is none.
std::string nameOf(Vocabulary words, uint32_t number);

// "on" and "off" as everywhere; "unset" for a switch that no file has named, "invalid" for any other value.
const char* switchText(uint32_t value);

}  // namespace ctl
