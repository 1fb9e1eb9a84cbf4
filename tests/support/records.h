// SPDX-License-Identifier: Apache-2.0
// Records of the tables, as a test writes them.
#pragma once

#include <string>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"

namespace kestrove::testing {

inline RouteEntry routeRecord(const std::string& destination, const std::string& mask, const std::string& gateway,
                              uint32_t status) {
  return {quad(destination), quad(mask), quad(gateway), status, 0, 0};
}

inline Route6Entry route6Record(const std::string& destination, uint32_t prefix, const std::string& gateway,
                                uint32_t status) {
  Route6Entry route = {};
  setIp6(route.destination, destination);
  setIp6(route.gateway, gateway);
  route.prefixLength = prefix;
  route.status = status;
  return route;
}

// As it lies in a slot of its list, in front of another slot or at the end.
template <typename Route>
Route linked(Route route, uint32_t next = SHM_NO_SLOT) {
  route.inUse = 1;
  route.next = next;
  return route;
}

inline ManagementAddress managementRecord(const std::string& address, int32_t kind,
                                          const std::string& mask = "255.255.255.0") {
  ManagementAddress entry = {};
  entry.ipVersion = SHM_FAMILY_IPV4;
  entry.address = quad(address);
  entry.mask = quad(mask);
  entry.interfaceKind = kind;
  return entry;
}

inline ManagementAddress management6Record(const std::string& address, int32_t kind, uint32_t prefix = 64) {
  ManagementAddress entry = {};
  entry.ipVersion = SHM_FAMILY_IPV6;
  setIp6(entry.address6, address);
  entry.prefixLength6 = prefix;
  entry.interfaceKind = kind;
  return entry;
}

inline Ip6Address ip6Record(const std::string& address, uint32_t prefix = 64) {
  Ip6Address entry = {};
  setIp6(entry.address, address);
  entry.prefixLength = prefix;
  return entry;
}

// A rule of IPv4 that accelerates TCP; ports, rate and priority are left to the test.
inline FilterRule tcpRule() {
  FilterRule rule = {};
  rule.ipVersion = SHM_FAMILY_IPV4;
  rule.proto = 6;
  rule.target = 1;
  rule.accel = SHM_ON;
  rule.ruleAction = SHM_RULE_ACTIVE;
  return rule;
}

}  // namespace kestrove::testing
