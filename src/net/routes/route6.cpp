// SPDX-License-Identifier: Apache-2.0
// IPv6 routes: their family for the shared operations, the exported operations, and prefixes as masks.
#include <endian.h>
#include <string.h>

#include "kestrove/codes.h"
#include "kestrove/ipv6.h"
#include "net/all_routes.h"
#include "net/routes/operations.h"
#include "net/routes/sorted_list.h"
#include "store/bounds.h"
#include "store/interface_names.h"
#include "store/route_slots.h"
#include "store/segment.h"

namespace kestrove {
namespace {

// Unlike IPv4, the bytes of the address are compared in their natural order.
struct Routes6 {
  using Record = Route6Entry;
  using Given = Route6Entry;
  using Notes = RouteNotes;
  static constexpr uint32_t kSlots = SHM_ROUTES6;
  static constexpr uint32_t kEmptyHead = SHM_NO_SLOT;
  static uint64_t half(const uint8_t* bytes) {
    uint64_t word;
    memcpy(&word, bytes, sizeof word);
    return be64toh(word);
  }
  static bool before(const Route6Entry& a, const Route6Entry& b) {
    if (a.prefixLength != b.prefixLength) return a.prefixLength > b.prefixLength;
    uint64_t upperA = half(a.destination), upperB = half(b.destination);
    return upperA != upperB ? upperA > upperB : half(a.destination + 8) > half(b.destination + 8);
  }
  static bool same(const Route6Entry& a, const Route6Entry& b) {
    return a.prefixLength == b.prefixLength && v6Match(a.destination, b.destination);
  }

  static SortedList<Routes6> list() {
    static SortedList<Routes6>::Memory memory;
    return {shm->routes6.head6, shm->routes6.slot, memory, RouteNotes(*shm, Work::kRoute6Linking)};
  }
  static void unlink(const Route6Entry& key) {
    setOtherHeadRight(key);
    list().unlink(key);
  }
  static Route6Entry* replace(const Route6Entry& key, const Route6Entry& route) {
    setOtherHeadRight(key);
    return list().replace(key, route);
  }
  // A head word of all ones in the other table is set right when the first IPv6 route leaves: kept on purpose.
  static void setOtherHeadRight(const Route6Entry& leaving) {
    const Route6Entry* first = list().first();
    bool firstLeaves = first && same(*first, leaving);
    if (firstLeaves && shm->routes.head == SHM_NO_SLOT) shm->routes.head = 0;
  }
  static bool acceptable(const Route6Entry&) { return true; }
  // The name goes into the caller's record alone: the stored route keeps the one it was given.
  static bool install(Route6Entry& route) { return gatewayIsLocal6(&route) == 1 && addKernelRoute6(&route) >= 0; }
  static int uninstall(const Route6Entry& route) { return deleteKernelRoute6(&route); }
};

Route6Entry keyOf(const void* destination, uint32_t prefixLength) {
  Route6Entry key = {};
  memcpy(key.destination, destination, sizeof key.destination);
  key.prefixLength = prefixLength;
  return key;
}

bool holds(const ManagementAddress& entry, const uint8_t* address) {
  uint8_t mask[16], ours[16], theirs[16];
  convPrefixToMask(mask, static_cast<int>(entry.prefixLength6));
  v6And(entry.address6, mask, ours);
  v6And(address, mask, theirs);
  return entry.ipVersion == SHM_FAMILY_IPV6 && v6Match(ours, theirs);
}

}  // namespace

void addAllRoutes6() { installRoutes<Routes6>(); }

}  // namespace kestrove

using namespace kestrove;

int addUserRoute6(Route6Entry* route) { return addRoute<Routes6>(route); }

int replaceUserRoute6(const void* oldDestination, uint32_t oldPrefixLength, Route6Entry* route, uint32_t, const char*) {
  if (!oldDestination) return fail(SHM_EINVAL);
  return replaceRoute<Routes6>(keyOf(oldDestination, oldPrefixLength), route);
}

int deleteUserRoute6(const void* destination16, uint32_t prefixLength) {
  if (!destination16) return fail(SHM_EINVAL);
  return deleteRoute<Routes6>(keyOf(destination16, prefixLength));
}

int getFirstRoute6TableEntry(Route6Entry* out) { return getFirstRoute<Routes6>(out); }

int getRoute6TableEntry(const void* destination16, uint32_t prefixLength, Route6Entry* out) {
  if (!destination16) return fail(SHM_EINVAL);
  return getRoute<Routes6>(keyOf(destination16, prefixLength), out);
}

int getNextRoute6TableEntry(const void* destination16, uint32_t prefixLength, Route6Entry* out) {
  if (!destination16) return fail(SHM_EINVAL);
  return getNextRoute<Routes6>(keyOf(destination16, prefixLength), out);
}

int freshenRoute6Table(uint32_t, const char*) { return freshenRoutes<Routes6>(); }

int gatewayIsLocal6(Route6Entry* route) {
  if (!route) return fail(SHM_EINVAL);
  if (!attachStore()) return 0;
  for (int i = 0; i < managementEntries(*shm); ++i) {
    const ManagementAddress& entry = shm->managementAddress[i];
    if (!holds(entry, route->gateway)) continue;
    InterfaceName name;
    if (interfaceName(entry.interfaceKind, name)) memcpy(route->interfaceName, name.text, sizeof name.text);
    return 1;
  }
  return 0;
}

void convPrefixToMask(void* mask16, int prefixLength) {
  if (!mask16) return;
  uint8_t* mask = static_cast<uint8_t*>(mask16);
  memset(mask, 0, 16);
  int whole = prefixLength / 8;
  int rest = prefixLength - 8 * whole;
  for (int i = 0; i < whole && i < 16; ++i) mask[i] = 255;
  if (rest >= 1 && whole < 16) mask[whole] = static_cast<uint8_t>(255 << (8 - rest));
}

void v6And(const void* a16, const void* b16, void* out16) {
  if (!a16 || !b16 || !out16) return;
  const uint8_t* a = static_cast<const uint8_t*>(a16);
  const uint8_t* b = static_cast<const uint8_t*>(b16);
  uint8_t both[16];  // whole before it is given out: the output may lie over one of the two
  for (int i = 0; i < 16; ++i) both[i] = a[i] & b[i];
  memcpy(out16, both, sizeof both);
}

int v6Match(const void* a16, const void* b16) {
  if (!a16 || !b16) return fail(SHM_EINVAL);
  return memcmp(a16, b16, 16) == 0;
}
