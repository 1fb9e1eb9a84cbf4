// Records that the operations work with, and the names that the starting store and they share.
#pragma once

#include <arpa/inet.h>
#include <string.h>

#include "kestrove/kestrove.h"

namespace kestrove::explore {

constexpr char kConfigFile[] = "/etc/config/kestrove.conf";
constexpr char kEventFile[] = "/var/log/kestrove/event.log";
constexpr char kLoadedFile[] = "/etc/config/branch.load";
constexpr char kLoadedFields[] = "/etc/config/fields.load";
constexpr char kBridgeAddress6[] = "2001:db8:b::1";
constexpr char kGateway[] = "192.168.30.2";
constexpr char kGateway6[] = "fd00:30::2";
constexpr uint32_t kRouteMask = 0x0000ffff;  // 255.255.0.0 as it lies in the store
constexpr uint32_t kRoute6Prefix = 48;
constexpr int kManagementPort = 3;

struct Address6 {
  explicit Address6(const char* text) { inet_pton(AF_INET6, text, bytes); }
  uint8_t bytes[16] = {};
};

inline RouteEntry routeTo(const char* destination) {
  RouteEntry route = {};
  route.destination = inet_addr(destination);
  route.netmask = kRouteMask;
  route.gateway = inet_addr(kGateway);
  route.status = 3;
  return route;
}

inline Route6Entry route6To(const char* destination) {
  Route6Entry route = {};
  memcpy(route.destination, Address6(destination).bytes, sizeof route.destination);
  memcpy(route.gateway, Address6(kGateway6).bytes, sizeof route.gateway);
  route.prefixLength = kRoute6Prefix;
  route.status = 3;
  return route;
}

inline Ip6Address bridgeAddress6(const char* text) {
  Ip6Address entry = {};
  memcpy(entry.address, Address6(text).bytes, sizeof entry.address);
  entry.prefixLength = 64;
  return entry;
}

inline ManagementAddress managementAddress(const char* address) {
  ManagementAddress entry = {};
  entry.ipVersion = 4;
  entry.status = 1;
  entry.address = inet_addr(address);
  entry.mask = inet_addr("255.255.255.0");
  entry.interfaceKind = kManagementPort;
  return entry;
}

inline ManagementAddress managementAddress6(const char* address) {
  ManagementAddress entry = {};
  entry.ipVersion = 6;
  entry.status = 1;
  memcpy(entry.address6, Address6(address).bytes, sizeof entry.address6);
  entry.prefixLength6 = 64;
  entry.interfaceKind = kManagementPort;
  return entry;
}

inline FilterRule ruleFor(int port) {
  FilterRule rule = {};
  rule.ipVersion = 4;
  rule.srcAddr = inet_addr("10.3.0.0");
  rule.srcMask = inet_addr("255.255.0.0");
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
