#include "config/item_table.h"

#include <stddef.h>
#include <string.h>

#include <algorithm>
#include <array>

#include "config/effects.h"
#include "kestrove/iface.h"
#include "kestrove/system.h"
#include "kestrove/text.h"
#include "sys/pause.h"

namespace kestrove {
namespace {

constexpr int kHighestId = 58;
constexpr uint32_t kWanOptPlatform = 14;
constexpr int kHighestMtu = 1500;
constexpr uint32_t kLinkSettings[] = {1, 20, 40, 80, 100, 120, 140};
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
  return OpModeState(value == SHM_ON ? kModePbrOn : kModePbrOff, &context);
}

int switchRelay(uint32_t value) {
  callSystem(value == 1 ? kRelayBypass : kRelayNormal);
  sys::pauseSeconds(1);
  callSystem(kRelayDynamic);
  return 0;
}

#define FIELD(name) .width = sizeof(ConfigRecord::name), .place = offsetof(ConfigRecord, name)

constexpr Item kItems[] = {
    {.id = 1, FIELD(lanLinkRate), .accepts = lanRate, .save = true, .pending = kPendingLanRate},
    {.id = 2, FIELD(wanLinkRate), .accepts = wanRate, .save = true, .pending = kPendingWanRate},
    {.id = 3, FIELD(wanIpDefaultRtt)},
    {.id = 4, FIELD(wanMaximumTransferUnit), .accepts = mtu, .save = true, .pending = kPendingWanMtu},
    {.id = 5, FIELD(lanMaximumTransferUnit), .accepts = mtu, .save = true, .pending = kPendingLanMtu},
    {.id = 6, FIELD(lanLinkSetting), .accepts = linkSetting, .save = true, .action = applyLink<0>},
    {.id = 7, FIELD(wanLinkSetting), .accepts = linkSetting, .save = true, .action = applyLink<1>},
    {.id = 8, FIELD(managementLinkSetting), .accepts = linkSetting, .save = true, .action = applyLink<3>},
    {.id = 9,
     FIELD(compression),
     .accepts = onOff,
     .onEvent = 9,
     .offEvent = 10,
     .save = true,
     .pending = kPendingCompression},
    {.id = 10, FIELD(transparentBridgeOperState)},
    {.id = 11, FIELD(snmpOperState), .accepts = onOff, .onEvent = 11, .offEvent = 12, .save = true},
    {.id = 12, FIELD(snmpVersion), .accepts = within<1, 3>},
    {.id = 13, FIELD(httpOperState), .accepts = onOff, .onEvent = 18, .offEvent = 19, .save = true},
    {.id = 14, FIELD(cliOperState), .accepts = onOff, .save = true},
    {.id = 15, FIELD(kestroveOperState), .accepts = onOff},
    {.id = 16, FIELD(spareFlag), .accepts = any},
    {.id = 17, FIELD(sshdOperState), .accepts = onOff, .onEvent = 37, .offEvent = 38, .save = true},
    {.id = 18, FIELD(bannerOperState), .accepts = onOff, .save = true},
    {.id = 19, FIELD(singleInterfaceMode)},
    {.id = 20, FIELD(pbrOperState), .accepts = onOff, .action = switchPolicyRouting},
    {.id = 25, FIELD(lanPbrRouteSet), .accepts = any},
    {.id = 26, FIELD(wanPbrRouteSet), .accepts = any},
    {.id = 35, FIELD(wanCongestionControl), .accepts = within<2, 5>, .save = true, .pending = kPendingWanCongestion},
    {.id = 36, FIELD(loggingOperState), .accepts = onOff, .save = true},
    {.id = 37, FIELD(fileBuffering), .accepts = onOff, .save = true},
    {.id = 38, FIELD(item38Value), .accepts = any, .save = true, .pending = kPendingItem38},
    {.id = 39, FIELD(failToWireAvailable), .accepts = onOff},
    {.id = 40, FIELD(failToWireStatus), .accepts = any},
    {.id = 41, FIELD(failToWireConfig), .accepts = within<1, 2>, .action = switchRelay},
    {.id = 43, FIELD(opModeState)},
    {.id = 44, FIELD(hardwarePlatform), .accepts = within<0, 15>},
    {.id = 47, FIELD(ipv6Support)},
    {.id = 48, FIELD(wanOptSupport), .present = onWanOptPlatform},
    {.id = 52, FIELD(minRate)},
    {.id = 53, FIELD(minMtu)},
    {.id = 54, FIELD(httpSessionTimeout), .accepts = any},
    {.id = 55, FIELD(flags[0]), .accepts = within<0, 1>, .save = true},
    {.id = 56, FIELD(flags[1]), .accepts = within<0, 1>, .save = true},
    {.id = 57, FIELD(flags[2]), .accepts = within<0, 1>, .save = true},
    {.id = 58, FIELD(flags[3]), .accepts = within<0, 1>, .save = true},
};
#undef FIELD

constexpr auto kItemOfId = [] {
  std::array<const Item*, kHighestId + 1> items = {};
  for (const Item& item : kItems) items[item.id] = &item;
  return items;
}();

char* fieldOf(const Item& item) { return reinterpret_cast<char*>(&shm->config) + item.place; }

}  // namespace

const Item* findItem(int id) {
  return static_cast<unsigned>(id) <= kHighestId ? kItemOfId[static_cast<unsigned>(id)] : nullptr;
}

uint32_t fetchItem(const Item& item) {
  uint32_t value = 0;
  memcpy(&value, fieldOf(item), item.width);  // numbers are little-endian: a byte fills the lowest one
  return value;
}

void storeItem(const Item& item, uint32_t value) { memcpy(fieldOf(item), &value, item.width); }

}  // namespace kestrove
