#include <stddef.h>

#include "config/effects.h"
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
  bool netmask = false;         // refuses 0 and masks with holes
  bool dropsWanArp = false;     // the WAN gateway's ARP entry goes before the change
  uint32_t pendingWithPbr = 0;  // change bit, with a signal, while policy routing is on
  uint8_t modeEvent = 0;        // 0: none
  void (*action)() = nullptr;
};

constexpr int kWanPort = 1;

void refreshServers() { refresh_userinterface_apps(); }

void readdressWanPort() {
  const ConfigRecord& config = shm->config;
  InterfaceName name;
  physicalInterfaceName(kWanPort, name);
  shm_ifconfig(name.text, config.wanIpAddress, config.wanIpAddressMask, config.wanBroadcastAddress);
}

#define FIELD(name) .place = offsetof(ConfigRecord, name)

constexpr NetworkItem kNetworkItems[] = {
    {.id = 1,
     FIELD(managementAddress),
     .pendingWithPbr = kPendingManagement,
     .modeEvent = kModeManagementAddress,
     .action = refreshServers},
    {.id = 2, FIELD(managementAddressMask), .netmask = true, .modeEvent = kModeManagementAddress},
    {.id = 3, FIELD(managementBroadcastAddress), .modeEvent = kModeManagementAddress},
    {.id = 4, FIELD(lanIpAddress), .modeEvent = kModeLanAddress},
    {.id = 5, FIELD(lanIpAddressMask), .modeEvent = kModeLanMask},
    {.id = 6, FIELD(lanBroadcastAddress), .modeEvent = kModeLanAddress},
    {.id = 7, FIELD(wanIpAddress), .modeEvent = kModeWanAddress},
    {.id = 8, FIELD(wanIpAddressMask), .modeEvent = kModeWanMask},
    {.id = 9, FIELD(wanBroadcastAddress), .modeEvent = kModeWanAddress},
    {.id = 12, FIELD(managementAddressMask), .netmask = true, .modeEvent = kModeManagementAddress},
    {.id = 13, FIELD(managementBroadcastAddress), .modeEvent = kModeManagementAddress},
    // It is the WAN gateway's ARP entry that goes with a new LAN gateway: kept on purpose.
    {.id = 14, FIELD(lanGateway), .dropsWanArp = true, .modeEvent = kModeLanGateway},
    {.id = 15, FIELD(wanGateway), .dropsWanArp = true, .action = readdressWanPort},
};
#undef FIELD

const NetworkItem* findItem(int id) {
  for (const NetworkItem& item : kNetworkItems) {
    if (item.id == id) return &item;
  }
  return nullptr;
}

uint32_t& fieldOf(const NetworkItem& item) {
  return *reinterpret_cast<uint32_t*>(reinterpret_cast<char*>(&shm->config) + item.place);
}

bool usableMask(uint32_t mask) { return mask != 0 && validateNetmask(&mask) == 0; }

// The system's own failures do not fail the item: the address is stored, and the next event applies it again.
int applyChange(const NetworkItem& item, uint32_t source, const char* user) {
  if (shm->config.pbrOperState == SHM_ON) tellEngine(item.pendingWithPbr);
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
  const NetworkItem* item = findItem(id);
  if (!item) return fail(SHM_EINVAL);
  *out = fieldOf(*item);
  return 0;
}

int setNetworkConfigItem(int id, const uint32_t* value, uint32_t source, const char* user) {
  if (!value) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  const NetworkItem* item = findItem(id);
  if (!item) return fail(SHM_EINVAL);
  if (item->netmask && !usableMask(*value)) return fail(SHM_EMASK);
  if (fieldOf(*item) == *value) return 0;
  bool apply = !configurationMode();
  if (apply && item->dropsWanArp) delArpEntry(shm->config.wanGateway);
  fieldOf(*item) = *value;
  return apply ? applyChange(*item, source, user) : 0;
}
