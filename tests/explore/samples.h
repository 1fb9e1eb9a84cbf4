// SPDX-License-Identifier: Apache-2.0
// Records that the operations work with, and the names that the starting store and they share.
#pragma once

#include <arpa/inet.h>
#include <string.h>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/files.h"
#include "tests/support/records.h"

namespace kestrove::explore {

using testing::ip6;
using testing::kConfigFile;
using testing::kEventFile;
using testing::quad;

constexpr char kLoadedFile[] = "/etc/config/branch.load";
constexpr char kLoadedFields[] = "/etc/config/fields.load";
constexpr char kBridgeAddress6[] = "2001:db8:b::1";
constexpr char kGateway[] = "192.168.30.2";
constexpr char kGateway6[] = "fd00:30::2";
constexpr uint32_t kRouteMask = 0x0000ffff;  // 255.255.0.0 as it lies in the store
constexpr uint32_t kRoute6Prefix = 48;
constexpr int kManagementPort = 3;

inline RouteEntry routeTo(const char* destination) {
  return testing::routeRecord(destination, "255.255.0.0", kGateway, SHM_ROUTE_ACTIVE);
}

inline Route6Entry route6To(const char* destination) {
  return testing::route6Record(destination, kRoute6Prefix, kGateway6, SHM_ROUTE_ACTIVE);
}

inline Ip6Address bridgeAddress6(const char* text) { return testing::ip6Record(text); }

inline ManagementAddress managementAddress(const char* address) {
  ManagementAddress entry = testing::managementRecord(address, kManagementPort);
  entry.status = SHM_ADDRESS_APPLIED;
  return entry;
}

inline ManagementAddress managementAddress6(const char* address) {
  ManagementAddress entry = testing::management6Record(address, kManagementPort);
  entry.status = SHM_ADDRESS_APPLIED;
  return entry;
}

inline FilterRule ruleFor(int port) {
  FilterRule rule = testing::tcpRule();
  rule.srcAddr = quad("10.3.0.0");
  rule.srcMask = quad("255.255.0.0");
  rule.destPort = rule.destPortEnd = port;
  rule.priority = 4;
  rule.bandwidth = 20000;
  return rule;
}

inline UserAccount accountOf(const char* name, bool administrator) {
  UserAccount account = {};
  strncpy(account.username, name, sizeof account.username - 1);
  account.superUser = administrator ? 1 : 2;
  account.lastPasswdChange = 1600000000;
  return account;
}

}  // namespace kestrove::explore
