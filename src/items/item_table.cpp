#include "items/item_table.h"

#include <stddef.h>
#include <string.h>

#include <algorithm>
#include <array>

#include "items/effects.h"
#include "kestrove/codes.h"
#include "kestrove/iface.h"
#include "kestrove/system.h"
#include "kestrove/text.h"
#include "sys/pause.h"

namespace kestrove {
namespace {

constexpr int kHighestId = SHM_ITEM_FLAG_58;
constexpr uint32_t kWanOptPlatform = 14;
constexpr int kHighestMtu = 1500;
constexpr uint32_t kLinkSettings[] = {SHM_LINK_AUTO,     SHM_LINK_10_HALF, SHM_LINK_10_FULL,  SHM_LINK_100_HALF,
                                      SHM_LINK_100_FULL, SHM_LINK_120,     SHM_LINK_1000_FULL};
constexpr char kRelayBypass[] = "/sbin/FtwWdgCtl ftw_pwr_bypass";
constexpr char kRelayNormal[] = "/sbin/FtwWdgCtl ftw_pwr_normal";
constexpr char kRelayDynamic[] = "/sbin/FtwWdgCtl ftw_dynamic_normal";

bool refuseUnless(bool accepted) {
  if (!accepted) shm_errno = SHM_EINVAL;
  return accepted;
}

template <uint32_t Min, uint32_t Max>
bool within(uint32_t value) {
  return refuseUnless(value >= Min && value <= Max);
}

bool bounded(uint32_t value, uint32_t min, int max) {
  return validateIntInBounds(static_cast<int>(value), static_cast<int>(min), max) == 0;
}

bool any(uint32_t) { return true; }
bool lanRate(uint32_t value) { return bounded(value, 10000, 100000000); }
bool wanRate(uint32_t value) { return bounded(value, shm->config.minRate, INT32_MAX); }
bool mtu(uint32_t value) { return bounded(value, shm->config.minMtu, kHighestMtu); }
bool linkSetting(uint32_t value) { return refuseUnless(std::ranges::count(kLinkSettings, value) != 0); }
constexpr auto onOff = within<SHM_ON, SHM_OFF>;

bool onWanOptPlatform() { return shm->config.hardwarePlatform == kWanOptPlatform; }

// A tool that fails does not undo the setting.
template <int Interface>
int applyLink(uint32_t) {
  setSystemLinkSetting(Interface);
  return 0;
}

int switchPolicyRouting(uint32_t value) {
  OpModeContext context = heldContext();
  return OpModeState(value == SHM_ON ? SHM_MODE_EVENT_PBR_ON : SHM_MODE_EVENT_PBR_OFF, &context);
}

int switchRelay(uint32_t value) {
  callSystem(value == 1 ? kRelayBypass : kRelayNormal);
  sys::pauseSeconds(1);
  callSystem(kRelayDynamic);
  return 0;
}

#define FIELD(name) .width = sizeof(ConfigRecord::name), .place = offsetof(ConfigRecord, name)

constexpr Item kItems[] = {
    {.id = SHM_ITEM_LAN_LINK_RATE,
     FIELD(lanLinkRate),
     .accepts = lanRate,
     .save = true,
     .pending = SHM_CHANGE_LAN_RATE},
    {.id = SHM_ITEM_WAN_LINK_RATE,
     FIELD(wanLinkRate),
     .accepts = wanRate,
     .save = true,
     .pending = SHM_CHANGE_WAN_RATE},
    {.id = SHM_ITEM_WAN_DEFAULT_RTT, FIELD(wanIpDefaultRtt)},
    {.id = SHM_ITEM_WAN_MTU,
     FIELD(wanMaximumTransferUnit),
     .accepts = mtu,
     .save = true,
     .pending = SHM_CHANGE_WAN_MTU},
    {.id = SHM_ITEM_LAN_MTU,
     FIELD(lanMaximumTransferUnit),
     .accepts = mtu,
     .save = true,
     .pending = SHM_CHANGE_LAN_MTU},
    {.id = SHM_ITEM_LAN_LINK_SETTING,
     FIELD(lanLinkSetting),
     .accepts = linkSetting,
     .save = true,
     .action = applyLink<SHM_IF_LAN>},
    {.id = SHM_ITEM_WAN_LINK_SETTING,
     FIELD(wanLinkSetting),
     .accepts = linkSetting,
     .save = true,
     .action = applyLink<SHM_IF_WAN>},
    {.id = SHM_ITEM_MANAGEMENT_LINK_SETTING,
     FIELD(managementLinkSetting),
     .accepts = linkSetting,
     .save = true,
     .action = applyLink<SHM_IF_MANAGEMENT>},
    {.id = SHM_ITEM_COMPRESSION,
     FIELD(compression),
     .accepts = onOff,
     .onEvent = SHM_EVENT_COMPRESSION_ON,
     .offEvent = SHM_EVENT_COMPRESSION_OFF,
     .save = true,
     .pending = SHM_CHANGE_COMPRESSION},
    {.id = SHM_ITEM_BRIDGING, FIELD(transparentBridgeOperState)},
    {.id = SHM_ITEM_SNMP,
     FIELD(snmpOperState),
     .accepts = onOff,
     .onEvent = SHM_EVENT_SNMP_ENABLED,
     .offEvent = SHM_EVENT_SNMP_DISABLED,
     .save = true},
    {.id = SHM_ITEM_SNMP_VERSION, FIELD(snmpVersion), .accepts = within<1, 3>},
    {.id = SHM_ITEM_WEB,
     FIELD(httpOperState),
     .accepts = onOff,
     .onEvent = SHM_EVENT_WEB_ENABLED,
     .offEvent = SHM_EVENT_WEB_DISABLED,
     .save = true},
    {.id = SHM_ITEM_CLI, FIELD(cliOperState), .accepts = onOff, .save = true},
    {.id = SHM_ITEM_ENGINE, FIELD(kestroveOperState), .accepts = onOff},
    {.id = SHM_ITEM_SPARE_FLAG, FIELD(spareFlag), .accepts = any},
    {.id = SHM_ITEM_SSH,
     FIELD(sshdOperState),
     .accepts = onOff,
     .onEvent = SHM_EVENT_SSH_DAEMON_ENABLED,
     .offEvent = SHM_EVENT_SSH_DAEMON_DISABLED,
     .save = true},
    {.id = SHM_ITEM_BANNER, FIELD(bannerOperState), .accepts = onOff, .save = true},
    {.id = SHM_ITEM_SINGLE_INTERFACE, FIELD(singleInterfaceMode)},
    {.id = SHM_ITEM_POLICY_ROUTING, FIELD(pbrOperState), .accepts = onOff, .action = switchPolicyRouting},
    {.id = SHM_ITEM_LAN_PBR_ROUTE_SET, FIELD(lanPbrRouteSet), .accepts = any},
    {.id = SHM_ITEM_WAN_PBR_ROUTE_SET, FIELD(wanPbrRouteSet), .accepts = any},
    {.id = SHM_ITEM_WAN_CONGESTION,
     FIELD(wanCongestionControl),
     .accepts = within<SHM_CONGESTION_PER_CONNECTION, SHM_CONGESTION_NONE>,
     .save = true,
     .pending = SHM_CHANGE_CONGESTION},
    {.id = SHM_ITEM_LOGGING, FIELD(loggingOperState), .accepts = onOff, .save = true},
    {.id = SHM_ITEM_FILE_BUFFERING, FIELD(fileBuffering), .accepts = onOff, .save = true},
    {.id = SHM_ITEM_VALUE_38, FIELD(item38Value), .accepts = any, .save = true, .pending = SHM_CHANGE_ITEM_38},
    {.id = SHM_ITEM_RELAY_AVAILABLE, FIELD(failToWireAvailable), .accepts = onOff},
    {.id = SHM_ITEM_RELAY_STATUS, FIELD(failToWireStatus), .accepts = any},
    {.id = SHM_ITEM_RELAY_SETTING, FIELD(failToWireConfig), .accepts = within<1, 2>, .action = switchRelay},
    {.id = SHM_ITEM_OPERATING_MODE, FIELD(opModeState)},
    {.id = SHM_ITEM_PLATFORM, FIELD(hardwarePlatform), .accepts = within<0, 15>},
    {.id = SHM_ITEM_IPV6_SUPPORT, FIELD(ipv6Support)},
    {.id = SHM_ITEM_WAN_OPT_SUPPORT, FIELD(wanOptSupport), .present = onWanOptPlatform},
    {.id = SHM_ITEM_MIN_RATE, FIELD(minRate)},
    {.id = SHM_ITEM_MIN_MTU, FIELD(minMtu)},
    {.id = SHM_ITEM_SESSION_TIMEOUT, FIELD(httpSessionTimeout), .accepts = any},
    {.id = SHM_ITEM_FLAG_55, FIELD(flags[0]), .accepts = within<0, 1>, .save = true},
    {.id = SHM_ITEM_FLAG_56, FIELD(flags[1]), .accepts = within<0, 1>, .save = true},
    {.id = SHM_ITEM_FLAG_57, FIELD(flags[2]), .accepts = within<0, 1>, .save = true},
    {.id = SHM_ITEM_FLAG_58, FIELD(flags[3]), .accepts = within<0, 1>, .save = true},
};
#undef FIELD

constexpr auto kItemOfId = [] {
  std::array<const Item*, kHighestId + 1> items = {};
  for (const Item& item : kItems) items[item.id] = &item;
  return items;
}();

static_assert(std::ranges::all_of(kItems, [](const Item& item) { return item.width == 1 || item.width == 4; }));

char* fieldOf(const Item& item) { return reinterpret_cast<char*>(&shm->config) + item.place; }

}  // namespace

const Item* findItem(int id) {
  return static_cast<unsigned>(id) <= kHighestId ? kItemOfId[static_cast<unsigned>(id)] : nullptr;
}

uint32_t fetchItem(const Item& item) {
  if (item.width == 1) return static_cast<uint8_t>(*fieldOf(item));
  uint32_t value;
  memcpy(&value, fieldOf(item), sizeof value);
  return value;
}

void storeItem(const Item& item, uint32_t value) {
  if (item.width == 1) {
    *fieldOf(item) = static_cast<char>(value);
  } else {
    memcpy(fieldOf(item), &value, sizeof value);
  }
}

}  // namespace kestrove
