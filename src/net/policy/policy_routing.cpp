// SPDX-License-Identifier: Apache-2.0
// Policy routing: tables 100 to 103 and the rules that choose them. A command that fails does not keep the next from
// running, on purpose: what is to be flushed or added may be gone, or be there, already.

#include "kestrove/kernelrules.h"
#include "kestrove/text.h"
#include "net/vlan_name.h"
#include "store/lock.h"
#include "store/segment.h"
#include "store/text.h"
#include "sys/command.h"

namespace kestrove {
namespace {

constexpr char kFlushTable[] = "/sbin/ip route flush table %s > /dev/null 2>&1 ";
constexpr char kFlushRules[] = "/sbin/ip rule flush > /dev/null 2>&1 ";
constexpr char kAddMainRule[] = "/sbin/ip rule add table main prio 32766 > /dev/null 2>&1 ";
constexpr char kAddDefaultRule[] = "/sbin/ip rule add table default prio 32767 > /dev/null 2>&1 ";
constexpr char kLanRule[] = "/sbin/ip rule add dev %s table %s >> %s  2>&1 ";
constexpr char kVlanRule[] = "/sbin/ip rule add dev %s table %s >> %s 2>&1 ";
constexpr char kDefaultRoute[] = "/sbin/ip route add default via %s dev %s table %s          >> %s 2>&1 ";
constexpr char kSubnetRoute[] = "/sbin/ip route add  %s dev %s table %s >> %s 2>&1 ";

constexpr const char* kTables[] = {"100", "101", "102", "103"};
constexpr char kFromVlan[] = "102";  // traffic that came in on the VLAN leaves on the LAN port
constexpr char kFromLan[] = "103";   // and the other way round

constexpr int kLongestSubnet = 19;

using sys::Word;

Word nowhere() { return Word::fixed("/dev/null"); }

void addRule(const char* format, const char* device, const char* table) {
  sys::tryLine(format, {Word::interface(device), Word::fixed(table), nowhere()});
}

// Whatever came in on the other side leaves by this gateway. A mask that gives no subnet leaves the text empty, and
// the command runs and fails by itself.
void routeThrough(uint32_t gateway, uint32_t mask, const char* device, const char* table) {
  sys::tryLine(kDefaultRoute,
               {Word::address(ipv4_to_a(gateway)), Word::interface(device), Word::fixed(table), nowhere()});
  char subnet[kLongestSubnet] = "";
  getCIDRSubnet(gateway, mask, subnet, sizeof subnet);
  sys::tryLine(kSubnetRoute, {Word::address(subnet), Word::interface(device), Word::fixed(table), nowhere()});
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int resetPolicyRules(void) {
  for (const char* table : kTables) sys::tryLine(kFlushTable, {Word::fixed(table)});
  sys::tryLine(kFlushRules);  // takes the rules of the main and the default table along
  sys::tryLine(kAddMainRule);
  return sys::runShell(kAddDefaultRule);
}

void pbrPolicyRule(int lock) {
  StoreLock held(lock != 0);  // a transition has it
  if (!held || !attachStore()) return;
  ConfigRecord& config = shm->config;
  VlanName vlan(config.bridgeRouterPhysicalName, config.lanVlanId);
  char lan[sizeof config.physicalLanInterfaceName];
  copyField(lan, sizeof lan, config.physicalLanInterfaceName);
  resetPolicyRules();
  addRule(kLanRule, lan, kFromLan);
  addRule(kVlanRule, vlan.text, kFromVlan);
  config.lanPbrRouteSet = 1;  // whatever becomes of the commands: they were run
  routeThrough(config.lanGateway, config.lanIpAddressMask, vlan.text, kFromLan);
  config.wanPbrRouteSet = 1;
  routeThrough(config.wanGateway, config.wanIpAddressMask, lan, kFromVlan);
}
