// Records that the operations work with, and the names that the starting store and they share.
#pragma once

#include <arpa/inet.h>
#include <string.h>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/files.h"

namespace kestrove::explore {

using testing::ip6;
using testing::kConfigFile;
using testing::kEventFile;
using testing::quad;
using testing::setIp6;

constexpr char kLoadedFile[] = "/etc/config/branch.load";
constexpr char kLoadedFields[] = "/etc/config/fields.load";
constexpr char kBridgeAddress6[] = "2001:db8:b::1";
constexpr char kGateway[] = "192.168.30.2";
constexpr char kGateway6[] = "fd00:30::2";
constexpr uint32_t kRouteMask = 0x0000ffff;  // 255.255.0.0 as it lies in the store
constexpr uint32_t kRoute6Prefix = 48;
constexpr int kManagementPort = 3;

inline RouteEntry routeTo(const char* destination) {
  RouteEntry route = {};
  route.destination = quad(destination);
  route.netmask = kRouteMask;
  route.gateway = quad(kGateway);
  route.status = 3;
  return route;
}

inline Route6Entry route6To(const char* destination) {
  Route6Entry route = {};
  setIp6(route.destination, destination);
  setIp6(route.gateway, kGateway6);
  route.prefixLength = kRoute6Prefix;
  route.status = 3;
  return route;
}

inline Ip6Address bridgeAddress6(const char* text) {
  Ip6Address entry = {};
  setIp6(entry.address, text);
  entry.prefixLength = 64;
  return entry;
}

inline ManagementAddress managementAddress(const char* address) {
  ManagementAddress entry = {};
  entry.ipVersion = 4;
  entry.status = 1;
  entry.address = quad(address);
  entry.mask = quad("255.255.255.0");
  entry.interfaceKind = kManagementPort;
  return entry;
}

inline ManagementAddress managementAddress6(const char* address) {
  ManagementAddress entry = {};
  entry.ipVersion = 6;
  entry.status = 1;
  setIp6(entry.address6, address);
  entry.prefixLength6 = 64;
  entry.interfaceKind = kManagementPort;
  return entry;
}

inline FilterRule ruleFor(int port) {
  FilterRule rule = {};
  rule.ipVersion = 4;
  rule.srcAddr = quad("10.3.0.0");
  rule.srcMask = quad("255.255.0.0");
  rule.proto = 6;
  rule.destPort = rule.destPortEnd = port;
  rule.target = 1;
  rule.priority = 4;
  rule.bandwidth = 20000;
  rule.accel = 1;
  rule.ruleAction = 3;
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
