// SPDX-License-Identifier: Apache-2.0
// What a transition does, one action each. All under the store lock; no action takes it.
#pragma once

#include "kestrove/opmode.h"
#include "net/vlan_name.h"
#include "sys/interface_address.h"

namespace kestrove::opmode {

// The two VLAN interfaces on the base interface.
struct Vlans {
  uint32_t lanId;
  uint32_t wanId;
  VlanName lan;
  VlanName wan;
};

// The interfaces of one transition. Only a change of VLAN ids leaves other VLANs than it finds.
struct Ports {
  char base[16];
  char lan[16];
  char wan[16];
  Vlans before;
  Vlans after;
  sys::InterfaceAddresses addresses;
};

Ports portsOf(int event, const OpModeContext& context);

using Action = void (*)(const Ports&);

void clearPhysical(const Ports& ports);
void clearVlansAroundPort(const Ports& ports);
void clearVlansThenPort(const Ports& ports);
void addVlans(const Ports& ports);
void takeDownVlansAroundPort(const Ports& ports);
void takeDownVlansThenPort(const Ports& ports);
void removeVlans(const Ports& ports);
void bridgeBase(const Ports& ports);
void bridgeBaseOfBridgingProduct(const Ports& ports);
void bridgeVlan(const Ports& ports);
void unbridgeBase(const Ports& ports);
void unbridgeVlan(const Ports& ports);
void logPolicyRoutingOn(const Ports& ports);
void giveLanAddress(const Ports& ports);
void giveWanAddress(const Ports& ports);
void forward(const Ports& ports);
void stopForwarding(const Ports& ports);
void routeByPolicy(const Ports& ports);
void resetPolicy(const Ports& ports);
void markPolicyRoutesSet(const Ports& ports);
void forgetGateways(const Ports& ports);
void usePhysicalNames(const Ports& ports);
void useVlanNames(const Ports& ports);

}  // namespace kestrove::opmode
