#include "net/opmode/reapply.h"
#include "kestrove/codes.h"

#include "kestrove/iface.h"
#include "kestrove/ipv6.h"
#include "kestrove/opmode.h"
#include "kestrove/routes.h"
#include "net/address/address_status.h"
#include "store/bounds.h"
#include "store/fail.h"
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

void installRoute6(Route6Entry& stored) {
  if (stored.status == SHM_ROUTE_DISABLED) return;
  deleteKernelRoute6(&stored);
  Route6Entry route = stored;  // the interface found for it belongs into the request only
  stored.status = gatewayIsLocal6(&route) == 1 && addKernelRoute6(&route) == 0 ? SHM_ROUTE_ACTIVE : SHM_ROUTE_INACTIVE;
}

void addAllRoutes6() {
  Route6Entry* route = usedSlot(shm->routes6.slot, shm->routes6.head6);
  for (int steps = 0; route && steps < SHM_ROUTES6; ++steps) {
    installRoute6(*route);
    route = usedSlot(shm->routes6.slot, route->next);
  }
}

}  // namespace

int addAddressesToInterfaces(OpModeContext* context) {
  if (!context) return fail(SHM_EINVAL);
  if (!attachStore()) return -1;
  for (int i = 0; i < managementEntries(*shm); ++i) {
    ManagementAddress& entry = shm->managementAddress[i];
    entry.status = addressStatus(context->mode, entry.interfaceKind);
    if (entry.status == SHM_ADDRESS_APPLIED && !applyAddress(entry)) entry.status = SHM_ADDRESS_KEPT;
  }
  return 0;
}

namespace kestrove::opmode {

void reapplyBridgeAddresses6() {
  for (int i = 0; i < ip6Entries(*shm); ++i) {
    shm_if6config(kBridge, shm->ip6Address[i].address, shm->ip6Address[i].prefixLength, kAddAddress);
  }
}

void reapplyRoutes() {
  if (usedSlot(shm->routes.slot, shm->routes.head)) addAllRoutes();
  addAllRoutes6();
}

}  // namespace kestrove::opmode
