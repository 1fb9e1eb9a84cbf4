// SPDX-License-Identifier: Apache-2.0
// The words of kestrovectl that stand for numbers of the store: what is printed is what is taken.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "kestrove/codes.h"
#include "kestrove/layout.h"

namespace ctl {

struct NamedNumber {
  const char* name;
  int number;
};

using Vocabulary = std::span<const NamedNumber>;

inline constexpr NamedNumber kSwitches[] = {{"on", SHM_ON}, {"off", SHM_OFF}};
inline constexpr NamedNumber kProtocols[] = {{"any", SHM_PROTO_ANY}, {"tcp", SHM_PROTO_TCP}, {"udp", SHM_PROTO_UDP}};
inline constexpr NamedNumber kTargets[] = {
    {"accelerate", SHM_TARGET_ACCELERATE}, {"bridge", SHM_TARGET_BRIDGE}, {"drop", SHM_TARGET_DROP}};
inline constexpr NamedNumber kRuleStatus[] = {{"undefined", SHM_RULE_UNDEFINED},
                                              {"invalid", SHM_RULE_INVALID},
                                              {"nis", SHM_RULE_NIS},
                                              {"active", SHM_RULE_ACTIVE}};
inline constexpr NamedNumber kPlaces[] = {{"last", INT32_MAX}};
inline constexpr NamedNumber kRouteStatus[] = {
    {"inactive", SHM_ROUTE_INACTIVE}, {"disabled", SHM_ROUTE_DISABLED}, {"active", SHM_ROUTE_ACTIVE}};
inline constexpr NamedNumber kInterfaceKinds[] = {{"lan", SHM_IF_LAN},
                                                  {"wan", SHM_IF_WAN},
                                                  {"management", SHM_IF_MANAGEMENT},
                                                  {"bridge", SHM_IF_BRIDGE},
                                                  {"router", SHM_IF_BASE}};

// Ports by the interface whose link they have: the LAN port is the base of the bridge.
inline constexpr NamedNumber kPorts[] = {{"lan", SHM_IF_BASE}, {"wan", SHM_IF_WAN}, {"management", SHM_IF_MANAGEMENT}};

// The words of saved scripts. Where a number has two, the first is the one that is written, but on the product that has
// constant rates.
inline constexpr NamedNumber kScriptLinks[] = {
    {"auto", SHM_LINK_AUTO},          {"10baseT", SHM_LINK_10_HALF},       {"10baseT-FD", SHM_LINK_10_FULL},
    {"100baseTx", SHM_LINK_100_HALF}, {"100baseTx-FD", SHM_LINK_100_FULL}, {"1000baseTx-FD", SHM_LINK_1000_FULL}};
inline constexpr NamedNumber kScriptAccelerations[] = {
    {"perConnection", 2}, {"ratepacing", 5}, {"errors", 4}, {"variable", 2}, {"constant", 5}};
inline constexpr NamedNumber kScriptFamilies[] = {
    {"4", SHM_FAMILY_IPV4}, {"6", SHM_FAMILY_IPV6}, {"Any", SHM_FAMILY_ANY}};
inline constexpr NamedNumber kScriptProtocols[] = {
    {"ANY", SHM_PROTO_ANY}, {"TCP", SHM_PROTO_TCP}, {"UDP", SHM_PROTO_UDP}};

// Null where the words do not have it.
const NamedNumber* findName(Vocabulary words, const std::string& name);

// The word of a number, or the number itself where there is none.
std::string nameOf(Vocabulary words, uint32_t number);

// "on" and "off" as everywhere; "unset" for a switch that no file has named, "invalid" for any other value.
const char* switchText(uint32_t value);

}  // namespace ctl
