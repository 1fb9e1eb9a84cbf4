// SPDX-License-Identifier: Apache-2.0
// A store with named ports, for the tests of the operating modes.
#pragma once

#include <string>
#include <vector>

#include "tests/support/addresses.h"
#include "tests/support/kernel_calls.h"
#include "tests/support/ports.h"
#include "tests/support/store.h"

namespace kestrove::testing {

using Lines = std::vector<std::string>;

inline Lines operator+(Lines left, const Lines& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

// Base "base0", LAN port "plan0", WAN port "pwan0", LAN VLAN 12, WAN VLAN 13, an address on either side.
class ModeTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    watchKernel(Kernel::kPretend);
    ConfigRecord& config = shm->config;
    namePorts("base0", "plan0", "pwan0");
    strcpy(config.lanInterfaceName, "lan?");
    strcpy(config.wanInterfaceName, "wan?");
    numberVlans(12, 13);
    config.lanIpAddress = quad("10.1.0.1");
    config.lanIpAddressMask = quad("255.255.0.0");
    config.lanBroadcastAddress = quad("10.1.0.255");
    config.wanIpAddress = quad("10.2.0.1");
    config.wanIpAddressMask = quad("255.255.255.0");
    config.lanGateway = quad("10.1.0.254");
    config.wanGateway = quad("10.2.0.254");
  }

  int raise(int event) {
    context_.mode = context_.l7Mode = context_.l7ModeCopy = context_.word5 = context_.word6 = 77;
    return OpModeState(event, &context_);
  }
  int raiseIn(uint32_t mode, int event) {
    shm->config.opModeState = mode;
    return raise(event);
  }
  std::string names() const { return std::string(shm->config.lanInterfaceName) + " " + shm->config.wanInterfaceName; }

  OpModeContext context_ = {};
};

inline Lines cleared(const std::string& name) {
  return {"SIOCSIFADDR " + name + " 0.0.0.0", "SIOCSIFFLAGS " + name + " 0x1003"};
}
inline Lines bridged(const std::string& port) {
  return {"run /usr/bin/init-bridging " + port + " plan0  > /dev/null 2>&1", "run ifconfig br0 up  > /dev/null 2>&1 "};
}
inline Lines unbridged(const std::string& port) {
  return {"run /usr/sbin/brctl delif br0 " + port + "  > /dev/null 2>&1",
          "run /usr/sbin/brctl delif br0 plan0  > /dev/null 2>&1", "run ifconfig br0 down  > /dev/null 2>&1 ",
          "run /usr/sbin/brctl delbr br0  > /dev/null 2>&1"};
}
inline Lines vlansAdded(const std::string& lan, const std::string& wan) {
  return {"run /sbin/vconfig add base0 " + lan + " > /dev/null 2>&1",
          "run /sbin/vconfig add base0 " + wan + " > /dev/null 2>&1"};
}
inline Lines vlansRemoved(const std::string& lan, const std::string& wan) {
  return {"run /sbin/vconfig rem base0." + lan + " > /dev/null 2>&1",
          "run /sbin/vconfig rem base0." + wan + " > /dev/null 2>&1"};
}
inline Lines down(const std::string& name) { return {"run /sbin/ifconfig " + name + "  down> /dev/null 2>&1"}; }
inline Lines lanAddress(const std::string& name) {
  return {"SIOCSIFADDR " + name + " 10.1.0.1", "SIOCSIFNETMASK " + name + " 255.255.0.0",
          "SIOCSIFBRDADDR " + name + " 10.1.0.255", "SIOCSIFFLAGS " + name + " 0x1003"};
}
inline Lines wanAddress() {
  return {"SIOCSIFADDR plan0 10.2.0.1", "SIOCSIFNETMASK plan0 255.255.255.0", "SIOCSIFBRDADDR plan0 10.2.0.255",
          "SIOCSIFFLAGS plan0 0x1003"};
}
inline Lines forwarding(const std::string& digit, const std::string& lan) {
  return {"run echo " + digit + " > /proc/sys/net/ipv4/conf/" + lan + "/forwarding",
          "run echo " + digit + " > /proc/sys/net/ipv4/conf/plan0/forwarding"};
}
inline Lines policyReset() {
  return {"run /sbin/ip route flush table 100 > /dev/null 2>&1 ",
          "run /sbin/ip route flush table 101 > /dev/null 2>&1 ",
          "run /sbin/ip route flush table 102 > /dev/null 2>&1 ",
          "run /sbin/ip route flush table 103 > /dev/null 2>&1 ",
          "run /sbin/ip rule flush > /dev/null 2>&1 ",
          "run /sbin/ip rule add table main prio 32766 > /dev/null 2>&1 ",
          "run /sbin/ip rule add table default prio 32767 > /dev/null 2>&1 "};
}
inline Lines policyRouting() {
  return policyReset() +
         Lines{"run /sbin/ip rule add dev plan0 table 103 >> /dev/null  2>&1 ",
               "run /sbin/ip rule add dev base0.12 table 102 >> /dev/null 2>&1 ",
               "run /sbin/ip route add default via 10.1.0.254 dev base0.12 table 103          >> /dev/null 2>&1 ",
               "run /sbin/ip route add  10.1.0.0/16 dev base0.12 table 103 >> /dev/null 2>&1 ",
               "run /sbin/ip route add default via 10.2.0.254 dev plan0 table 102          >> /dev/null 2>&1 ",
               "run /sbin/ip route add  10.2.0.0/24 dev plan0 table 102 >> /dev/null 2>&1 "};
}

}  // namespace kestrove::testing
