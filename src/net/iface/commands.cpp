// SPDX-License-Identifier: Apache-2.0
// What is done by other programs: bridge, VLANs, forwarding. Each line is tried and the next one run whatever became of
// it, on purpose: a bridge or a VLAN may be there, or be gone, already.
#include "kestrove/iface.h"
#include "kestrove/items.h"
#include "store/fail.h"
#include "store/interface_names.h"
#include "sys/command.h"

using namespace kestrove;
using sys::Word;

namespace {

// The text of each line is contract, blanks and all.
constexpr char kInitBridging[] = "/usr/bin/init-bridging %s %s  > /dev/null 2>&1";
constexpr char kInterfaceUp[] = "ifconfig %s up  > /dev/null 2>&1 ";
constexpr char kInterfaceDown[] = "ifconfig %s down  > /dev/null 2>&1 ";
constexpr char kRemovePort[] = "/usr/sbin/brctl delif %s %s  > /dev/null 2>&1";
constexpr char kRemoveBridge[] = "/usr/sbin/brctl delbr %s  > /dev/null 2>&1";
constexpr char kForwardOn[] = "echo 1 > /proc/sys/net/ipv4/conf/%s/forwarding";
constexpr char kForwardOff[] = "echo 0 > /proc/sys/net/ipv4/conf/%s/forwarding";
constexpr char kAddVlan[] = "/sbin/vconfig add %s %u > /dev/null 2>&1";
constexpr char kRemoveVlan[] = "/sbin/vconfig rem %s.%u > /dev/null 2>&1";
constexpr char kPortDown[] = "/sbin/ifconfig %s  down> /dev/null 2>&1";
constexpr char kVlanDown[] = "/sbin/ifconfig %s.%u  down> /dev/null 2>&1";

int runForName(const char* format, const char* name) {
  if (!name) return fail(SHM_EINVAL);
  sys::tryLine(format, {Word::interface(name)});
  return 0;
}

int runForVlan(const char* format, const char* name, uint32_t vid) {
  if (!name) return fail(SHM_EINVAL);
  sys::tryLine(format, {Word::interface(name), Word::number(vid)});
  return 0;
}

using VlanPair = int (*)(const char* name, uint32_t vid1, uint32_t vid2);

int runForPhysical(VlanPair run, int kind, uint32_t vid1, uint32_t vid2) {
  char name[16];
  if (getPhysicalInterfaceName(kind, name, sizeof name) != 0) return -1;
  return run(name, vid1, vid2);
}

}  // namespace

int turnOnBridge(const char* port1, const char* port2) {
  if (!port1 || !port2) return fail(SHM_EINVAL);
  sys::tryLine(kInitBridging, {Word::interface(port1), Word::interface(port2)});
  return runForName(kInterfaceUp, kBridge);
}

int turnOffBridge(const char* port1, const char* port2) {
  if (!port1 || !port2) return fail(SHM_EINVAL);
  sys::tryLine(kRemovePort, {Word::interface(kBridge), Word::interface(port1)});
  sys::tryLine(kRemovePort, {Word::interface(kBridge), Word::interface(port2)});
  runForName(kInterfaceDown, kBridge);
  return runForName(kRemoveBridge, kBridge);
}

int turnOnIpfoward(const char* name) { return runForName(kForwardOn, name); }
int turnOffIpfoward(const char* name) { return runForName(kForwardOff, name); }

int shm_vconfig_up(int kind, uint32_t vid1, uint32_t vid2) {
  return runForPhysical(shm_vconfig_add2, kind, vid1, vid2);
}

int shm_vconfig_add1(const char* name, uint32_t vid) { return runForVlan(kAddVlan, name, vid); }

int shm_vconfig_add2(const char* name, uint32_t vid1, uint32_t vid2) {
  return shm_vconfig_add1(name, vid1) == 0 ? shm_vconfig_add1(name, vid2) : -1;
}

int shm_vconfig_down(int kind, uint32_t vid1, uint32_t vid2) {
  return runForPhysical(shm_vconfig_rem2, kind, vid1, vid2);
}

int shm_vconfig_rem1(const char* name, uint32_t vid) { return runForVlan(kRemoveVlan, name, vid); }

int shm_vconfig_rem2(const char* name, uint32_t vid1, uint32_t vid2) {
  return shm_vconfig_rem1(name, vid1) == 0 ? shm_vconfig_rem1(name, vid2) : -1;
}

// Id 0 is no VLAN: the port itself goes down.
int shm_ifconfig_down1(const char* name, uint32_t vid) {
  return vid == 0 ? runForName(kPortDown, name) : runForVlan(kVlanDown, name, vid);
}
