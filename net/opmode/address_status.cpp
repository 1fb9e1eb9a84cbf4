#include "net/opmode/address_status.h"

#include "kestrove/iface.h"
#include "net/opmode/modes.h"
#include "store/interface_names.h"

namespace kestrove::opmode {
namespace {

enum { kAdd6 = 0, kAdd4 = 1 };
enum InterfaceKind { kLan = 0, kBridgeInterface = 4, kBase = 5 };
constexpr uint32_t kIpv6 = 6;

bool usedIn(uint32_t mode, int32_t interfaceKind) {
  switch (interfaceKind) {
    case kBridgeInterface: return mode != kPolicyRouting;
    case kLan:
    case kBase: return mode != kDual || shm->config.productId == kUnbridgedProduct;
    default: return true;
  }
}

}  // namespace

AddressStatus addressStatus(uint32_t mode, int32_t interfaceKind) {
  return usedIn(mode, interfaceKind) ? kApplied : kNotApplied;
}

bool applyAddress(const ManagementAddress& entry) {
  InterfaceName name;
  if (!interfaceName(entry.interfaceKind, name)) return false;
  if (entry.ipVersion == kIpv6) return shm_if6config(name.text, entry.address6, entry.prefixLength6, kAdd6) == 0;
  return shm_netlinkConfig(name.text, entry.address, entry.mask, 0, kAdd4) == 0 && set_iface_up(name.text) == 0;
}

}  // namespace kestrove::opmode
