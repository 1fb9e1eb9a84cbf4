// SPDX-License-Identifier: Apache-2.0
// IPv4 routes: their family for the shared operations, and the exported operations.
#include "kestrove/codes.h"
#include "kestrove/routes.h"
#include "kestrove/text.h"
#include "net/routes/operations.h"
#include "net/routes/sorted_list.h"
#include "store/bounds.h"
#include "store/route_slots.h"
#include "store/segment.h"

namespace kestrove {
namespace {

// Masks and addresses are compared as the words that lie in the store, so among equal masks the last byte of the
// address counts most: kept on purpose, other programs walk the same list.
struct Routes4 {
  using Record = RouteEntry;
  using Given = const RouteEntry;
  using Notes = RouteNotes;
  static constexpr uint32_t kSlots = SHM_ROUTES;
  static constexpr uint32_t kEmptyHead = 0;
  static uint64_t rank(const RouteEntry& route) { return uint64_t{route.netmask} << 32 | route.destination; }
  static bool before(const RouteEntry& a, const RouteEntry& b) { return rank(a) > rank(b); }
  static bool same(const RouteEntry& a, const RouteEntry& b) {
    return a.netmask == b.netmask && a.destination == b.destination;
  }

  static SortedList<Routes4> list() {
    static SortedList<Routes4>::Memory memory;
    return {shm->routes.head, shm->routes.slot, memory, RouteNotes(*shm, Work::kRouteLinking)};
  }
  static void unlink(const RouteEntry& key) { list().unlink(key); }
  static RouteEntry* replace(const RouteEntry& key, const RouteEntry& route) { return list().replace(key, route); }
  static bool acceptable(const RouteEntry& route) { return validateNetmask(&route.netmask) == 0; }
  static bool install(const RouteEntry& route) {
    return v4AddressIsLocal(route.gateway) >= 0 && addKernelRoute(&route) >= 0;
  }
  static int uninstall(const RouteEntry& route) { return deleteKernelRoute(&route); }
};

RouteEntry keyOf(uint32_t destination, uint32_t netmask) {
  RouteEntry key = {};
  key.destination = destination;
  key.netmask = netmask;
  return key;
}

bool holds(const ManagementAddress& entry, uint32_t address) {
  return entry.ipVersion == SHM_FAMILY_IPV4 && (address & entry.mask) == (entry.address & entry.mask);
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int addUserRoute(const RouteEntry* route) { return addRoute<Routes4>(route); }

int replaceUserRoute(uint32_t oldDestination, uint32_t oldNetmask, const RouteEntry* route, uint32_t, const char*) {
  return replaceRoute<Routes4>(keyOf(oldDestination, oldNetmask), route);
}

int deleteUserRoute(uint32_t destination, uint32_t netmask) {
  return deleteRoute<Routes4>(keyOf(destination, netmask));
}

int getFirstRouteTableEntry(RouteEntry* out) { return getFirstRoute<Routes4>(out); }

int getRouteTableEntry(uint32_t destination, uint32_t netmask, RouteEntry* out) {
  return getRoute<Routes4>(keyOf(destination, netmask), out);
}

int getNextRouteTableEntry(uint32_t destination, uint32_t netmask, RouteEntry* out) {
  return getNextRoute<Routes4>(keyOf(destination, netmask), out);
}

int freshenRouteTable(uint32_t, const char*) { return freshenRoutes<Routes4>(); }

int addAllRoutes(void) {
  StoreLock lock;
  if (!lock) return -1;
  installRoutes<Routes4>();
  return endOfWalk();
}

int v4AddressIsLocal(uint32_t address) {
  if (!attachStore()) return -1;
  for (int i = 0; i < managementEntries(*shm); ++i) {
    if (holds(shm->managementAddress[i], address)) return i;
  }
  return -1;
}
