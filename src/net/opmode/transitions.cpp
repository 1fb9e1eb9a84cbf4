// SPDX-License-Identifier: Apache-2.0
// The transitions as a table, and the handlers that walk it.
#include <syslog.h>

#include "kestrove/codes.h"
#include "kestrove/opmode.h"
#include "net/opmode/actions.h"
#include "net/opmode/modes.h"
#include "store/fail.h"
#include "store/segment.h"

using namespace kestrove;
using namespace kestrove::opmode;

// No application mode accelerates in this release; the table is exported for those that come.
OpModeHandler appAccelerateModeFtbl[4] = {};

namespace {

constexpr int kMostActions = 10;
constexpr uint32_t kApplicationModes = 4;

struct Transition {
  uint32_t mode;
  int event;
  uint32_t newMode;
  Action actions[kMostActions];  // up to the first null one
};

// The steps of a transition are not checked: half of one cannot be taken back, so it goes on and the new mode holds.
constexpr Transition kTransitions[] = {
    {SHM_MODE_DUAL,
     SHM_MODE_EVENT_POWERED_ON,
     SHM_MODE_DUAL,
     {clearPhysical, bridgeBaseOfBridgingProduct, usePhysicalNames}},
    {SHM_MODE_DUAL,
     SHM_MODE_EVENT_SINGLE_ON,
     SHM_MODE_SINGLE,
     {unbridgeBase, addVlans, clearVlansAroundPort, bridgeVlan, useVlanNames}},
    {SHM_MODE_SINGLE,
     SHM_MODE_EVENT_POWERED_ON,
     SHM_MODE_SINGLE,
     {clearPhysical, addVlans, clearVlansAroundPort, bridgeVlan, useVlanNames}},
    {SHM_MODE_SINGLE,
     SHM_MODE_EVENT_SINGLE_OFF,
     SHM_MODE_DUAL,
     {unbridgeVlan, takeDownVlansAroundPort, removeVlans, clearPhysical, bridgeBase, usePhysicalNames}},
    {SHM_MODE_SINGLE,
     SHM_MODE_EVENT_PBR_ON,
     SHM_MODE_POLICY_ROUTING,
     {logPolicyRoutingOn, unbridgeBase, giveLanAddress, giveWanAddress, forward, routeByPolicy, useVlanNames}},
    {SHM_MODE_SINGLE,
     SHM_MODE_EVENT_VLAN_CHANGE,
     SHM_MODE_SINGLE,
     {unbridgeVlan, takeDownVlansThenPort, removeVlans, addVlans, clearVlansThenPort, bridgeVlan, useVlanNames}},
    {SHM_MODE_POLICY_ROUTING,
     SHM_MODE_EVENT_POWERED_ON,
     SHM_MODE_POLICY_ROUTING,
     {clearPhysical, addVlans, giveLanAddress, giveWanAddress, forward, routeByPolicy, markPolicyRoutesSet}},
    {SHM_MODE_POLICY_ROUTING,
     SHM_MODE_EVENT_SINGLE_OFF,
     SHM_MODE_DUAL,
     {resetPolicy, stopForwarding, takeDownVlansThenPort, removeVlans, clearPhysical, bridgeBase, usePhysicalNames}},
    {SHM_MODE_POLICY_ROUTING,
     SHM_MODE_EVENT_PBR_OFF,
     SHM_MODE_SINGLE,
     {stopForwarding, resetPolicy, bridgeVlan, useVlanNames, forgetGateways}},
    {SHM_MODE_POLICY_ROUTING,
     SHM_MODE_EVENT_VLAN_CHANGE,
     SHM_MODE_POLICY_ROUTING,
     {stopForwarding, resetPolicy, takeDownVlansThenPort, removeVlans, addVlans, giveLanAddress, giveWanAddress,
      forward, routeByPolicy, useVlanNames}},
};

struct ModeRow {
  const char* logName;    // null: the mode logs nothing
  int lastAddressChange;  // the last event that it hands to appNetConfigChange
};

constexpr ModeRow kModeRows[kModes] = {{nullptr, SHM_MODE_EVENT_INBAND_MANAGEMENT},
                                       {"opModeSingleOnly", SHM_MODE_EVENT_INBAND_MANAGEMENT},
                                       {"opModeSinglePBR", SHM_MODE_EVENT_LAN_GATEWAY}};

struct AddressChange {
  int event;
  Action action;
};

constexpr AddressChange kAddressChanges[] = {{SHM_MODE_EVENT_WAN_ADDRESS, giveWanAddress},
                                             {SHM_MODE_EVENT_LAN_ADDRESS, giveLanAddress},
                                             {SHM_MODE_EVENT_WAN_GATEWAY, routeByPolicy},
                                             {SHM_MODE_EVENT_LAN_GATEWAY, routeByPolicy}};

Action addressChange(int event) {
  for (const AddressChange& change : kAddressChanges) {
    if (change.event == event) return change.action;
  }
  return nullptr;
}

int changeAddress(int event, OpModeContext* context) {
  Action action = context->mode == SHM_MODE_POLICY_ROUTING ? addressChange(event) : nullptr;
  if (!action) return 0;
  if (!attachStore()) return -1;
  action(portsOf(event, *context));
  return 0;
}

// By application mode; all but the first leave addresses alone.
constexpr OpModeHandler kAddressChangeHandlers[kApplicationModes] = {changeAddress};

const Transition* find(uint32_t mode, int event) {
  for (const Transition& transition : kTransitions) {
    if (transition.mode == mode && transition.event == event) return &transition;
  }
  return nullptr;
}

void walk(const Transition& transition, int event, OpModeContext& context) {
  Ports ports = portsOf(event, context);
  for (Action action : transition.actions) {
    if (!action) break;
    action(ports);
  }
  context.mode = transition.newMode;
}

// The names start with event 1, so this is the name of the following event: kept on purpose.
const char* loggedName(int event) {
  constexpr int kNamed = 18;
  return event >= 0 && event < kNamed ? event_str[event] : "";
}

void handOn(const ModeRow& row, int event, OpModeContext& context) {
  if (event >= SHM_MODE_EVENT_SQUID_ON && event <= SHM_MODE_EVENT_DOMO_OFF) {
    appAccelerationModeChange(event, &context);
  } else if (event >= SHM_MODE_EVENT_OUTBAND_MANAGEMENT && event <= row.lastAddressChange) {
    appNetConfigChange(event, &context);
  } else if (row.logName) {
    syslog(LOG_ERR, "%s: EVENT %s error", row.logName, loggedName(event));
  }
}

// An event without a transition needs no store.
int handle(uint32_t mode, int event, OpModeContext* context) {
  if (!context) return fail(SHM_EINVAL);
  const ModeRow& row = kModeRows[mode];
  if (row.logName) syslog(LOG_DEBUG, "%s event:%d", row.logName, event);
  const Transition* transition = find(mode, event);
  if (transition && !attachStore()) return -1;
  if (transition) {
    walk(*transition, event, *context);
  } else {
    handOn(row, event, *context);
  }
  return 0;
}

}  // namespace

bool opmode::handles(uint32_t mode, int event) { return find(mode, event) != nullptr; }

int opModeDualIf(int event, OpModeContext* context) { return handle(SHM_MODE_DUAL, event, context); }
int opModeSingleOnly(int event, OpModeContext* context) { return handle(SHM_MODE_SINGLE, event, context); }
int opModeSinglePBR(int event, OpModeContext* context) { return handle(SHM_MODE_POLICY_ROUTING, event, context); }

int appAccelerationModeChange(int event, OpModeContext* context) {
  if (!context) return fail(SHM_EINVAL);
  OpModeHandler handler = context->l7Mode < kApplicationModes ? appAccelerateModeFtbl[context->l7Mode] : nullptr;
  if (handler) handler(event, context);
  return 0;
}

int appNetConfigChange(int event, OpModeContext* context) {
  if (!context || context->l7Mode >= kApplicationModes) return fail(SHM_EINVAL);
  OpModeHandler handler = kAddressChangeHandlers[context->l7Mode];
  return handler ? handler(event, context) : 0;
}
