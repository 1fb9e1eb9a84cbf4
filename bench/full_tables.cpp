// SPDX-License-Identifier: Apache-2.0
#include "bench/full_tables.h"

#include <arpa/inet.h>
#include <string.h>

namespace bench {
namespace {

constexpr uint32_t kMask24 = 0xffffff00;
constexpr uint32_t kGateway = 0xc0a805fe;  // 192.168.5.254
constexpr int32_t kFirstEvent = 1300094102;

}  // namespace

RouteEntry routeAt(uint32_t n) {
  uint32_t place = SHM_ROUTES - n;
  uint32_t destination = 10 | (place & 0xff) << 8 | (place >> 8) << 16;
  return {destination, htonl(kMask24), htonl(kGateway), SHM_ROUTE_ACTIVE, 0, 0};
}

Route6Entry route6At(uint32_t n) {
  Route6Entry route = {{0x20, 0x01, 0x0d, 0xb8}, {0xfd}, 64, SHM_ROUTE_ACTIVE, "", 0, 0};
  uint32_t place = htonl(SHM_ROUTES6 - n);
  memcpy(route.destination + 4, &place, sizeof place);
  route.gateway[15] = 0xfe;
  return route;
}

FilterRule ruleAt(uint32_t n) {
  FilterRule rule = {};
  rule.ipVersion = SHM_FAMILY_IPV4;
  rule.srcAddr = htonl(0x0a000000 | n << 8);
  rule.srcMask = htonl(kMask24);
  rule.dstAddr = htonl(0xc0a80000 | n);
  rule.dstMask = UINT32_MAX;
  rule.proto = 6;
  rule.srcPort = 1024;
  rule.srcPortEnd = 65535;
  rule.destPort = static_cast<int32_t>(n);
  rule.destPortEnd = rule.destPort + 10;
  rule.target = 1;
  rule.priority = rule.destPort % 8;
  rule.bandwidth = 10000000;
  rule.accel = SHM_ON;
  rule.ruleAction = SHM_RULE_ACTIVE;
  return rule;
}

void fillRoutes() {
  for (uint32_t n = 0; n < SHM_ROUTES; ++n) {
    RouteEntry& route = shm->routes.slot[n] = routeAt(n);
    Route6Entry& route6 = shm->routes6.slot[n] = route6At(n);
    route.inUse = route6.inUse = 1;
    route.next = route6.next = n + 1 < SHM_ROUTES ? n + 1 : SHM_NO_SLOT;
  }
  shm->routes.head = shm->routes6.head6 = 0;
}

void fillRules(int32_t count) {
  for (int32_t n = 0; n < count; ++n) shm->filterTable.rule[n] = ruleAt(static_cast<uint32_t>(n));
  shm->filterTable.ruleCount = count;
}

void fillEvents() {
  for (int32_t n = 0; n < SHM_EVENTS; ++n)
    shm->eventLog.record[n] = {kFirstEvent + n * 7, SHM_EVENT_CLI_LOGIN, SHM_SOURCE_SERIAL, "admin"};
  shm->eventLog.eventLogFull = 1;
  shm->eventLog.readIndex = shm->eventLog.writeIndex = 0;
}

}  // namespace bench
