// SPDX-License-Identifier: Apache-2.0
#include "net/opmode/actions.h"
#include "kestrove/codes.h"

#include <string.h>
#include <syslog.h>

#include "kestrove/iface.h"
#include "kestrove/kernelrules.h"
#include "kestrove/segment.h"
#include "net/opmode/modes.h"
#include "store/fail.h"
#include "store/text.h"
#include "sys/interface_request.h"

namespace kestrove::opmode {
namespace {

constexpr int kLockHeld = 0;

using Base = const char (&)[16];

Vlans vlansOn(Base base, uint32_t lanId, uint32_t wanId) { return {lanId, wanId, {base, lanId}, {base, wanId}}; }

Vlans vlansBefore(int event, Base base, const OpModeContext& context) {
  if (event != SHM_MODE_EVENT_VLAN_CHANGE) return vlansOn(base, context.lanVlanId, context.wanVlanId);
  if (context.lanVlanIdCopy == 0 && context.wanVlanIdCopy == 0) {
    return vlansOn(base, shm->config.lanVlanId, shm->config.wanVlanId);
  }
  return vlansOn(base, context.lanVlanIdCopy, context.wanVlanIdCopy);
}

// What shm_ifconfig does, but on one plain socket for the whole transition: to close a packet socket takes the kernel
// some ten milliseconds, and a transition changes up to six interfaces.
void giveAddress(const Ports& ports, const char* name, uint32_t address, uint32_t mask, uint32_t broadcast) {
  if (strlen(name) > sys::kLongestInterfaceName) {
    fail(SHM_EINVAL);
    return;
  }
  if (!ports.addresses.configure(name, address, mask, broadcast)) fail(SHM_ESYSTEM);
}

void clearAddress(const Ports& ports, const char* name) { giveAddress(ports, name, 0, 0, 0); }
void takeDown(const char* name) { shm_ifconfig_down1(name, 0); }

// Only the store has no room for a longer name than the kernel takes.
void storeName(char (&field)[16], const char* name) {
  setField(field, name, sys::kLongestInterfaceName);
  field[sys::kLongestInterfaceName] = '\0';
}

}  // namespace

Ports portsOf(int event, const OpModeContext& context) {
  const ConfigRecord& config = shm->config;
  Ports ports = {"", "", "", {}, {}, sys::InterfaceAddresses(sys::openSocket(AF_INET, SOCK_DGRAM))};
  copyField(ports.base, sizeof ports.base, config.bridgeRouterPhysicalName);
  copyField(ports.lan, sizeof ports.lan, config.physicalLanInterfaceName);
  copyField(ports.wan, sizeof ports.wan, config.physicalWanInterfaceName);
  ports.before = vlansBefore(event, ports.base, context);
  ports.after = vlansOn(ports.base, context.lanVlanId, context.wanVlanId);
  return ports;
}

void clearPhysical(const Ports& ports) {
  clearAddress(ports, ports.base);
  clearAddress(ports, ports.lan);
  clearAddress(ports, ports.wan);
}

void clearVlansAroundPort(const Ports& ports) {
  clearAddress(ports, ports.after.lan.text);
  clearAddress(ports, ports.lan);
  clearAddress(ports, ports.after.wan.text);
}

void clearVlansThenPort(const Ports& ports) {
  clearAddress(ports, ports.after.lan.text);
  clearAddress(ports, ports.after.wan.text);
  clearAddress(ports, ports.lan);
}

void addVlans(const Ports& ports) { shm_vconfig_add2(ports.base, ports.after.lanId, ports.after.wanId); }

void takeDownVlansAroundPort(const Ports& ports) {
  takeDown(ports.before.lan.text);
  takeDown(ports.lan);
  takeDown(ports.before.wan.text);
}

void takeDownVlansThenPort(const Ports& ports) {
  takeDown(ports.before.lan.text);
  takeDown(ports.before.wan.text);
  takeDown(ports.lan);
}

void removeVlans(const Ports& ports) { shm_vconfig_rem2(ports.base, ports.before.lanId, ports.before.wanId); }

void bridgeBase(const Ports& ports) { turnOnBridge(ports.base, ports.lan); }

void bridgeBaseOfBridgingProduct(const Ports& ports) {
  if (shm->config.productId != SHM_PRODUCT_UNBRIDGED) bridgeBase(ports);
}

void bridgeVlan(const Ports& ports) { turnOnBridge(ports.after.lan.text, ports.lan); }

// Policy routing is entered with the base interface named here, although the VLAN is in the bridge: kept on purpose.
void unbridgeBase(const Ports& ports) { turnOffBridge(ports.base, ports.lan); }

void unbridgeVlan(const Ports& ports) { turnOffBridge(ports.before.lan.text, ports.lan); }

void logPolicyRoutingOn(const Ports& ports) {
  syslog(LOG_DEBUG, "EVENT_PBR_ON");
  syslog(LOG_DEBUG, "turnOnPBR: turnOffBridge %s %s", ports.base, ports.lan);
}

void giveLanAddress(const Ports& ports) {
  const ConfigRecord& config = shm->config;
  giveAddress(ports, ports.after.lan.text, config.lanIpAddress, config.lanIpAddressMask, config.lanBroadcastAddress);
}

void giveWanAddress(const Ports& ports) {
  const ConfigRecord& config = shm->config;
  giveAddress(ports, ports.lan, config.wanIpAddress, config.wanIpAddressMask, config.wanBroadcastAddress);
}

void forward(const Ports& ports) {
  turnOnIpfoward(ports.after.lan.text);
  turnOnIpfoward(ports.lan);
}

void stopForwarding(const Ports& ports) {
  turnOffIpfoward(ports.before.lan.text);
  turnOffIpfoward(ports.lan);
}

void routeByPolicy(const Ports&) { pbrPolicyRule(kLockHeld); }
void resetPolicy(const Ports&) { resetPolicyRules(); }

void markPolicyRoutesSet(const Ports&) {
  shm->config.wanPbrRouteSet = SHM_ON;
  shm->config.lanPbrRouteSet = SHM_ON;
}

void forgetGateways(const Ports&) {
  delArpEntry(shm->config.lanGateway);
  delArpEntry(shm->config.wanGateway);
}

void usePhysicalNames(const Ports& ports) {
  setField(shm->config.wanInterfaceName, ports.wan);
  setField(shm->config.lanInterfaceName, ports.lan);
}

void useVlanNames(const Ports& ports) {
  storeName(shm->config.wanInterfaceName, ports.after.wan.text);
  setField(shm->config.lanInterfaceName, ports.lan);
}

}  // namespace kestrove::opmode
