// SPDX-License-Identifier: Apache-2.0
#include "net/address/address_status.h"
#include "kestrove/codes.h"

#include "kestrove/iface.h"
#include "kestrove/opmode.h"
#include "store/bounds.h"
#include "store/fail.h"
#include "store/interface_names.h"
#include "store/segment.h"

namespace kestrove {
namespace {

enum { kAdd6 = 0, kAdd4 = 1 };

// Policy routing has no bridge. In dual mode the LAN port and the base are ports of the bridge and bear no address of
// their own, but for the product that does not bridge them.
bool usedIn(uint32_t mode, int32_t interfaceKind) {
  switch (interfaceKind) {
    case SHM_IF_BRIDGE: return mode != SHM_MODE_POLICY_ROUTING;
    case SHM_IF_LAN:
    case SHM_IF_BASE: return mode != SHM_MODE_DUAL || shm->config.productId == SHM_PRODUCT_UNBRIDGED;
    default: return true;
  }
}

}  // namespace

uint32_t addressStatus(uint32_t mode, int32_t interfaceKind) {
  return usedIn(mode, interfaceKind) ? SHM_ADDRESS_APPLIED : SHM_ADDRESS_KEPT;
}

bool applyAddress(const ManagementAddress& entry) {
  InterfaceName name;
  if (!interfaceName(entry.interfaceKind, name)) return false;
  if (entry.ipVersion == SHM_FAMILY_IPV6)
    return shm_if6config(name.text, entry.address6, entry.prefixLength6, kAdd6) == 0;
  return shm_netlinkConfig(name.text, entry.address, entry.mask, 0, kAdd4) == 0 && set_iface_up(name.text) == 0;
}

}  // namespace kestrove

using namespace kestrove;

int addAddressesToInterfaces(OpModeContext* context) {
  if (!context) return fail(SHM_EINVAL);
  if (!attachStore()) return -1;
  for (int i = 0; i < managementEntries(*shm); ++i) {
    ManagementAddress& entry = shm->managementAddress[i];
    entry.status = addressStatus(context->mode, entry.interfaceKind);
    // The one refusal of a transition that leaves a trace.
    if (entry.status == SHM_ADDRESS_APPLIED && !applyAddress(entry)) entry.status = SHM_ADDRESS_KEPT;
  }
  return 0;
}
