// SPDX-License-Identifier: Apache-2.0
// The numbered addresses: a table, and its exported accessors.
#include <stddef.h>

#include "items/effects.h"
#include "kestrove/codes.h"
#include "kestrove/iface.h"
#include "kestrove/items.h"
#include "kestrove/routes.h"
#include "kestrove/system.h"
#include "kestrove/text.h"
#include "store/interface_names.h"
#include "store/lock.h"

namespace kestrove {
namespace {

// An address of the configuration record. All are stored in network byte order.
struct NetworkItem {
  uint8_t id = 0;
  uint16_t place = 0;
  uint8_t synonym = 0;          // a second id, or 0
  bool netmask = false;         // refuses 0 and masks with holes
  bool dropsWanArp = false;     // the WAN gateway's ARP entry goes before the change
  uint32_t pendingWithPbr = 0;  // change bit, with a signal, while policy routing is on
  uint8_t modeEvent = 0;        // 0: none
  void (*action)() = nullptr;
};

void refreshServers() { refresh_userinterface_apps(); }

void readdressWanPort() {
  const ConfigRecord& config = shm->config;
  InterfaceName name;
  static_cast<void>(physicalInterfaceName(SHM_IF_WAN, name));  // the table of numbers has the WAN
  shm_ifconfig(name.text, config.wanIpAddress, config.wanIpAddressMask, config.wanBroadcastAddress);
}

#define NETWORK_ITEM(number, member, ...) {.id = number, .place = offsetof(ConfigRecord, member), __VA_ARGS__},
#define ALSO(number) .synonym = number,
#define NO_HOLES .netmask = true,
#define DROPS_WAN_ARP .dropsWanArp = true,
#define PBR_BIT(bit) .pendingWithPbr = bit,
#define MODE_EVENT(event) .modeEvent = event,
#define ACTION(function, text) .action = function,

constexpr NetworkItem kNetworkItems[] = {
#include "items/items.def"
};

const NetworkItem* findNetworkItem(int id) {
  if (id == 0) return nullptr;  // the synonym of a row that has none
  for (const NetworkItem& item : kNetworkItems) {
    if (item.id == id || item.synonym == id) return &item;
  }
  return nullptr;
}

uint32_t& fieldOf(const NetworkItem& item) {
  return *reinterpret_cast<uint32_t*>(reinterpret_cast<char*>(&shm->config) + item.place);
}

bool usableMask(uint32_t mask) { return mask != 0 && validateNetmask(&mask) == 0; }

// The system's own failures do not fail the item: the address is stored, and the next event applies it again.
int applyChange(const NetworkItem& item, uint32_t source, const char* user) {
  if (shm->config.pbrOperState == SHM_ON) markAndSignalUnlessDebugging(item.pendingWithPbr);
  if (item.modeEvent != 0) {
    OpModeContext context = heldContext();
    OpModeState(item.modeEvent, &context);
  }
  if (item.action) item.action();
  ChangeSave save;
  save.run(save_shared_memory);
  freshenRouteTable(source, user);
  return save.result();
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int getNetworkConfigItem(int id, uint32_t* out) {
  if (!out) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  const NetworkItem* item = findNetworkItem(id);
  if (!item) return fail(SHM_EINVAL);
  *out = fieldOf(*item);
  return 0;
}

int setNetworkConfigItem(int id, const uint32_t* value, uint32_t source, const char* user) {
  if (!value) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  const NetworkItem* item = findNetworkItem(id);
  if (!item) return fail(SHM_EINVAL);
  if (item->netmask && !usableMask(*value)) return fail(SHM_EMASK);
  if (fieldOf(*item) == *value) return 0;
  bool apply = !configurationMode();
  if (apply && item->dropsWanArp) delArpEntry(shm->config.wanGateway);
  fieldOf(*item) = *value;
  return apply ? applyChange(*item, source, user) : 0;
}
