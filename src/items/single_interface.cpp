// SPDX-License-Identifier: Apache-2.0
// Single-interface mode: a switch, two VLAN ids and the mode event that a change makes.
#include "items/effects.h"
#include "kestrove/codes.h"
#include "kestrove/items.h"
#include "store/lock.h"

namespace kestrove {
namespace {

struct VlanIds {
  uint32_t lan;
  uint32_t wan;
  bool operator==(const VlanIds&) const = default;
};

bool acceptable(uint32_t mode, VlanIds ids) {
  return mode == SHM_OFF || (mode == SHM_ON && ids.lan != 0 && ids.wan != 0);
}

// 0 when nothing changed.
int storeMode(uint32_t mode, VlanIds old, VlanIds ids) {
  ConfigRecord& config = shm->config;
  if (mode == SHM_ON) {
    config.lanVlanId = ids.lan;
    config.wanVlanId = ids.wan;
  }
  if (config.singleInterfaceMode == mode) return mode == SHM_ON && old != ids ? SHM_MODE_EVENT_VLAN_CHANGE : 0;
  config.singleInterfaceMode = static_cast<uint8_t>(mode);
  if (mode == SHM_OFF) config.pbrOperState = SHM_OFF;
  return mode == SHM_ON ? SHM_MODE_EVENT_SINGLE_ON : SHM_MODE_EVENT_SINGLE_OFF;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int getSingleInterfaceMode(uint32_t* mode, uint32_t* lanVlan, uint32_t* wanVlan) {
  if (!mode || !lanVlan || !wanVlan) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  VlanIds ids = {shm->config.lanVlanId, shm->config.wanVlanId};  // the outputs may be these fields
  *mode = shm->config.singleInterfaceMode;
  *lanVlan = ids.lan;
  *wanVlan = ids.wan;
  return 0;
}

int setSingleInterfaceMode(uint32_t mode, uint32_t lanVlan, uint32_t wanVlan) {
  StoreLock lock;
  if (!lock) return -1;
  VlanIds ids = {lanVlan, wanVlan};
  if (!acceptable(mode, ids)) return fail(SHM_EINVAL);
  VlanIds old = {shm->config.lanVlanId, shm->config.wanVlanId};
  int event = storeMode(mode, old, ids);
  if (event == 0 || configurationMode()) return 0;
  OpModeContext context = heldContext();
  // Only the change of ids takes these from the caller: the interfaces of the old pair must be found.
  context.wanVlanId = ids.wan;
  context.lanVlanId = ids.lan;
  context.wanVlanIdCopy = old.wan;
  context.lanVlanIdCopy = old.lan;
  return OpModeState(event, &context);
}
