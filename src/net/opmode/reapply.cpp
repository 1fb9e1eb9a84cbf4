// SPDX-License-Identifier: Apache-2.0
#include "net/opmode/reapply.h"
#include "kestrove/codes.h"

#include "kestrove/iface.h"
#include "kestrove/routes.h"
#include "net/all_routes.h"
#include "store/bounds.h"
#include "store/interface_names.h"
#include "store/segment.h"

using namespace kestrove;
using namespace kestrove::opmode;

namespace {

enum { kAddAddress = 0 };

constexpr uint32_t kInUse = 1;

template <typename Slot>
Slot* usedSlot(Slot (&slots)[SHM_ROUTES], uint32_t number) {
  return number < SHM_ROUTES && slots[number].inUse == kInUse ? &slots[number] : nullptr;
}

}  // namespace

namespace kestrove::opmode {

void reapplyBridgeAddresses6() {
  for (int i = 0; i < ip6Entries(*shm); ++i) {
    // An address that is refused is tried again with the next transition.
    shm_if6config(kBridge, shm->ip6Address[i].address, shm->ip6Address[i].prefixLength, kAddAddress);
  }
}

void reapplyRoutes() {
  if (usedSlot(shm->routes.slot, shm->routes.head)) addAllRoutes();
  addAllRoutes6();
}

}  // namespace kestrove::opmode
