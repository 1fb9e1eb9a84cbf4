// The transitions as a table, and the handlers that walk it.
#include <syslog.h>

#include "kestrove/opmode.h"
#include "net/opmode/actions.h"
#include "net/opmode/modes.h"
#include "store/fail.h"
#include "store/segment.h"

using namespace kestrove;
using namespace kestrove::opmode;

OpModeHandler appAccelerateModeFtbl[4] = {};

namespace {

constexpr int kMostActions = 10;
constexpr uint32_t kApplicationModes = 4;

struct Transition {
  Mode mode;
  int event;
  Mode newMode;
  Action actions[kMostActions];  // up to the first null one
};

constexpr Transition kTransitions[] = {
    {kDual, kPoweredOn, kDual, {clearPhysical, bridgeBaseOfBridgingProduct, usePhysicalNames}},
    {kDual, kSingleOn, kSingle, {unbridgeBase, addVlans, clearVlansAroundPort, bridgeVlan, useVlanNames}},
    {kSingle, kPoweredOn, kSingle, {clearPhysical, addVlans, clearVlansAroundPort, bridgeVlan, useVlanNames}},
    {kSingle,
     kSingleOff,
     kDual,
     {unbridgeVlan, takeDownVlansAroundPort, removeVlans, clearPhysical, bridgeBase, usePhysicalNames}},
    {kSingle,
     kPolicyRoutingOn,
     kPolicyRouting,
     {logPolicyRoutingOn, unbridgeBase, giveLanAddress, giveWanAddress, forward, routeByPolicy, useVlanNames}},
    {kSingle,
     kVlanChange,
     kSingle,
     {unbridgeVlan, takeDownVlansThenPort, removeVlans, addVlans, clearVlansThenPort, bridgeVlan, useVlanNames}},
    {kPolicyRouting,
     kPoweredOn,
     kPolicyRouting,
     {clearPhysical, addVlans, giveLanAddress, giveWanAddress, forward, routeByPolicy, markPolicyRoutesSet}},
    {kPolicyRouting,
     kSingleOff,
     kDual,
     {resetPolicy, stopForwarding, takeDownVlansThenPort, removeVlans, clearPhysical, bridgeBase, usePhysicalNames}},
    {kPolicyRouting,
     kPolicyRoutingOff,
     kSingle,
     {stopForwarding, resetPolicy, bridgeVlan, useVlanNames, forgetGateways}},
    {kPolicyRouting,
     kVlanChange,
     kPolicyRouting,
     {stopForwarding, resetPolicy, takeDownVlansThenPort, removeVlans, addVlans, giveLanAddress, giveWanAddress,
      forward, routeByPolicy, useVlanNames}},
};

struct ModeRow {
  const char* logName;    // null: the mode logs nothing
  int lastAddressChange;  // the last event that it hands to appNetConfigChange
};

constexpr ModeRow kModeRows[kModes] = {
    {nullptr, kManagementChange}, {"opModeSingleOnly", kManagementChange}, {"opModeSinglePBR", kLanGateway}};

struct AddressChange {
  int event;
  Action action;
};

constexpr AddressChange kAddressChanges[] = {{kWanAddress, giveWanAddress},
                                             {kLanAddress, giveLanAddress},
                                             {kWanGateway, routeByPolicy},
                                             {kLanGateway, routeByPolicy}};

Action addressChange(int event) {
  for (const AddressChange& change : kAddressChanges) {
    if (change.event == event) return change.action;
  }
  return nullptr;
}

int changeAddress(int event, OpModeContext* context) {
  Action action = context->mode == kPolicyRouting ? addressChange(event) : nullptr;
  if (!action) return 0;
  if (!attachStore()) return -1;
  action(portsOf(event, *context));
  return 0;
}

// By application mode.
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
  if (event >= kFirstApplication && event <= kLastApplication) {
    appAccelerationModeChange(event, &context);
  } else if (event >= kFirstAddressChange && event <= row.lastAddressChange) {
    appNetConfigChange(event, &context);
  } else if (row.logName) {
    syslog(LOG_ERR, "%s: EVENT %s error", row.logName, loggedName(event));
  }
}

// An event without a transition needs no store.
int handle(Mode mode, int event, OpModeContext* context) {
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

int opModeDualIf(int event, OpModeContext* context) { return handle(kDual, event, context); }
int opModeSingleOnly(int event, OpModeContext* context) { return handle(kSingle, event, context); }
int opModeSinglePBR(int event, OpModeContext* context) { return handle(kPolicyRouting, event, context); }

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
