// SPDX-License-Identifier: Apache-2.0
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

template <uint32_t... Values>
bool oneOf(uint32_t value) {
  return refuseUnless(((value == Values) || ...));
}

bool bounded(uint32_t value, uint32_t min, int max) {
  return validateIntInBounds(static_cast<int>(value), static_cast<int>(min), max) == 0;
}

template <uint32_t Min, int Max>
bool inBounds(uint32_t value) {
  return bounded(value, Min, Max);
}

template <uint32_t ConfigRecord::*Min, int Max>
bool inBoundsFrom(uint32_t value) {
  return bounded(value, shm->config.*Min, Max);
}

bool any(uint32_t) { return true; }

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

#define ITEM(number, member, ...) \
  {.id = number, .width = sizeof(ConfigRecord::member), .place = offsetof(ConfigRecord, member), __VA_ARGS__},
#define SWITCH .accepts = within<SHM_ON, SHM_OFF>,
#define ANY .accepts = any,
#define WITHIN(low, high) .accepts = within<low, high>,
#define BOUNDS(low, high) .accepts = inBounds<low, high>,
#define BOUNDS_FROM(field, high) .accepts = inBoundsFrom<&ConfigRecord::field, high>,
#define ONE_OF(...) .accepts = oneOf<__VA_ARGS__>,
#define PRESENT(function, text) .present = function,
#define EVENTS(on, off) .onEvent = on, .offEvent = off,
#define SAVE .save = true,
#define BIT(bit) .pending = bit,
#define ACTION(function, text) .action = function,

constexpr Item kItems[] = {
#include "items/items.def"
};

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
