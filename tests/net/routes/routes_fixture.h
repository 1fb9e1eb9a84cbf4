// SPDX-License-Identifier: Apache-2.0
// The two route tables behind one face, for tests of what they share.
#pragma once

#include <arpa/inet.h>
#include <string.h>

#include <vector>

#include "tests/support/addresses.h"
#include "tests/support/store.h"

namespace kestrove::testing {

enum : uint32_t { kInactive = 1, kDisabled = 2, kActive = 3 };

struct Family4 {
  using Record = RouteEntry;
  static constexpr uint32_t kEmptyHead = 0;

  // Routes of rank 0, 1, 2 ... stand in that order.
  static Record route(uint32_t rank, uint32_t status = kDisabled) {
    Record route = {};
    route.destination = 0xFFFF0000u - rank;
    route.netmask = 0xFFFFFFFFu;
    route.gateway = quad("192.168.5.254");
    route.status = status;
    return route;
  }
  static uint32_t rank(const Record& route) { return 0xFFFF0000u - route.destination; }

  static int add(Record* route) { return addUserRoute(route); }
  static int replace(const Record& key, Record* route) {
    return replaceUserRoute(key.destination, key.netmask, route, 0, "--");
  }
  static int remove(const Record& key) { return deleteUserRoute(key.destination, key.netmask); }
  static int first(Record* out) { return getFirstRouteTableEntry(out); }
  static int get(const Record& key, Record* out) { return getRouteTableEntry(key.destination, key.netmask, out); }
  static int next(const Record& key, Record* out) { return getNextRouteTableEntry(key.destination, key.netmask, out); }
  static int freshen() { return freshenRouteTable(0, "--"); }
  static uint32_t& head() { return shm->routes.head; }
  static Record* slots() { return shm->routes.slot; }
};

struct Family6 {
  using Record = Route6Entry;
  static constexpr uint32_t kEmptyHead = SHM_NO_SLOT;

  static Record route(uint32_t rank, uint32_t status = kDisabled) {
    Record route = {};
    setIp6(route.destination, "2001:db8::");
    uint32_t tail = htonl(0xFFFF0000u - rank);
    memcpy(route.destination + 12, &tail, sizeof tail);
    setIp6(route.gateway, "2001:db8:5::fe");
    route.prefixLength = 128;
    route.status = status;
    return route;
  }
  static uint32_t rank(const Record& route) {
    uint32_t tail;
    memcpy(&tail, route.destination + 12, sizeof tail);
    return 0xFFFF0000u - ntohl(tail);
  }

  static int add(Record* route) { return addUserRoute6(route); }
  static int replace(const Record& key, Record* route) {
    return replaceUserRoute6(key.destination, key.prefixLength, route, 0, "--");
  }
  static int remove(const Record& key) { return deleteUserRoute6(key.destination, key.prefixLength); }
  static int first(Record* out) { return getFirstRoute6TableEntry(out); }
  static int get(const Record& key, Record* out) { return getRoute6TableEntry(key.destination, key.prefixLength, out); }
  static int next(const Record& key, Record* out) {
    return getNextRoute6TableEntry(key.destination, key.prefixLength, out);
  }
  static int freshen() { return freshenRoute6Table(0, "--"); }
  static uint32_t& head() { return shm->routes6.head6; }
  static Record* slots() { return shm->routes6.slot; }
};

// Ranks in list order, as a front end walks them.
template <typename Family>
std::vector<uint32_t> walk() {
  std::vector<uint32_t> ranks;
  typename Family::Record route = {};
  for (int result = Family::first(&route); result == 0 && ranks.size() <= SHM_ROUTES;
       result = Family::next(route, &route)) {
    ranks.push_back(Family::rank(route));
  }
  return ranks;
}

}  // namespace kestrove::testing
