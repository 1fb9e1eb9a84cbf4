// SPDX-License-Identifier: Apache-2.0
// Traffic between the real hosts behind the ports in each mode, and what the kernel holds afterwards.
//
// Where the kernel has no VLAN devices the appliance's vconfig makes a virtual cable of the VLAN's name to the host
// behind the port; the frames then carry no tag, but they pass the same interfaces.

#include <gmock/gmock.h>

#include "kestrove/kestrove.h"
#include "tests/net/opmode/opmode_fixture.h"
#include "tests/support/kernel.h"
#include "tests/support/lock_watch.h"
#include "tests/support/records.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class Traffic : public ModeTest {
 protected:
  void SetUp() override {
    ModeTest::SetUp();
    watchKernel(Kernel::kReal);
    namePorts("eth0", "eth1", "eth0");
  }

  static std::string on(const char* host, const std::string& line) {
    return tried("/sbin/ip netns exec " + std::string(host) + " " + line);
  }
  static std::string ping(const char* host, const std::string& address) {
    return on(host, "ping -c 1 -W 3 " + address);
  }
  // Both ends of the LAN VLAN on one subnet, for a mode that bridges it.
  static void addressVlanHosts(const std::string& vlan) {
    on("wan", "ip address add 192.168.12.3/24 dev eth0." + vlan);
    on("lan", "ip address add 192.168.12.2/24 dev eth0");
  }
  // The hosts of policy routing are the two gateways.
  static void addressGateways(const std::string& vlan) {
    on("wan", "ip address add 10.1.0.254/16 dev eth0." + vlan);
    on("wan", "ip route add 10.2.0.0/24 via 10.1.0.1");
    on("lan", "ip address add 10.2.0.254/24 dev eth0");
    on("lan", "ip route add 10.1.0.0/16 via 10.2.0.1");
  }
  static bool exists(const std::string& name) { return fileExists("/sys/class/net/" + name); }
};

const auto arrives = HasSubstr(" 0% packet loss");

TEST_F(Traffic, ProgramsOfATransitionRunInsideItsHold) {
  LockWatch watch;
  watch.instead("/usr/bin/init-bridging");
  ASSERT_EQ(0, raiseIn(0, 1));
  context_.locked = 1;
  ASSERT_EQ(0, shm_lock());
  ASSERT_EQ(0, raiseIn(0, 2));
  EXPECT_THAT(watch.seen(), ElementsAre("init-bridging held", "init-bridging held"));
  EXPECT_TRUE(fileLockHeld()) << "it is the caller's";
  shm_unlock();
}

TEST_F(Traffic, DualBridgesTheTwoPorts) {
  ASSERT_EQ(0, raiseIn(0, 1));
  EXPECT_THAT(ping("lan", "192.168.10.3"), arrives);
  EXPECT_EQ("eth1 eth0", names());
}

TEST_F(Traffic, SingleBridgesTheLanVlan) {
  ASSERT_EQ(0, raiseIn(0, 1));
  ASSERT_EQ(0, raise(2));
  addressVlanHosts("12");
  EXPECT_THAT(ping("lan", "192.168.12.3"), arrives);
  EXPECT_THAT(ping("lan", "192.168.10.3"), Not(arrives)) << "the untagged side is out of the bridge";
  EXPECT_EQ("eth1 eth0.13", names());
}

TEST_F(Traffic, NewVlansReplaceTheOld) {
  ASSERT_EQ(0, raiseIn(1, 1));
  context_ = {};
  context_.lanVlanId = 22;
  context_.wanVlanId = 23;
  ASSERT_EQ(0, raise(6));
  EXPECT_FALSE(exists("eth0.12") || exists("eth0.13"));
  addressVlanHosts("22");
  EXPECT_THAT(ping("lan", "192.168.12.3"), arrives);
}

TEST_F(Traffic, PolicyRoutingRoutesBetweenTheGateways) {
  ASSERT_EQ(0, raiseIn(2, 1));
  addressGateways("12");
  EXPECT_THAT(ping("lan", "10.1.0.254"), arrives);
  EXPECT_THAT(ping("wan", "10.2.0.254"), arrives);
  EXPECT_THAT(tried("/sbin/ip rule"), AllOf(HasSubstr("iif eth1 lookup 103"), HasSubstr("iif eth0.12 lookup 102")));
  EXPECT_THAT(tried("/sbin/ip route show table 103"), HasSubstr("default via 10.1.0.254 dev eth0.12"));
  EXPECT_THAT(tried("/sbin/ip route show table 102"), HasSubstr("default via 10.2.0.254 dev eth1"));
}

TEST_F(Traffic, ThroughAllModesAndBack) {
  ASSERT_EQ(0, raiseIn(0, 1));
  EXPECT_THAT(ping("lan", "192.168.10.3"), arrives);
  ASSERT_EQ(0, raise(2));
  ASSERT_EQ(0, raise(4));
  EXPECT_EQ(2u, shm->config.opModeState);
  tried("/sbin/ip link set eth0.12 nomaster");
  ASSERT_EQ(0, raise(5));
  addressVlanHosts("12");
  EXPECT_THAT(ping("lan", "192.168.12.3"), arrives);
  EXPECT_THAT(tried("/sbin/ip rule"), Not(HasSubstr("lookup 103")));
  ASSERT_EQ(0, raise(3));
  EXPECT_THAT(ping("lan", "192.168.10.3"), arrives);
  EXPECT_FALSE(exists("eth0.12") || exists("eth0.13"));
}

TEST_F(Traffic, AddressesAndRoutesAreBackAfterAMove) {
  shm->managementAddress[0] = managementRecord("10.9.0.1", SHM_IF_BRIDGE);
  shm->managementAddress[1] = management6Record("fd00:9::1", SHM_IF_BRIDGE);
  shm->managementAddressCount = 2;
  shm->ip6Address[0] = ip6Record("fd00:50::1");
  shm->ip6Count = 1;
  shm->routes.slot[0] = {quad("10.77.0.0"), quad("255.255.0.0"), quad("10.9.0.5"), 3, 1, SHM_NO_SLOT};
  shm->routes6.slot[0] = linked(route6Record("fd00:77::", 48, "fd00:9::5", SHM_ROUTE_ACTIVE));
  shm->routes6.head6 = 0;
  for (int event : {1, 2, 3}) {
    ASSERT_EQ(0, raise(event));
    EXPECT_THAT(tried("/sbin/ip address show dev br0"),
                AllOf(HasSubstr("10.9.0.1/24"), HasSubstr("fd00:9::1/64"), HasSubstr("fd00:50::1/64")));
    EXPECT_THAT(tried("/sbin/ip route"), HasSubstr("10.77.0.0/16 via 10.9.0.5 dev br0"));
    EXPECT_THAT(tried("/sbin/ip -6 route"), HasSubstr("fd00:77::/48 dev br0"));
    EXPECT_EQ(3u, shm->routes.slot[0].status);
    EXPECT_EQ(3u, shm->routes6.slot[0].status);
  }
}

TEST_F(Traffic, WanAddressChangeReachesTheLanPort) {
  ASSERT_EQ(0, raiseIn(2, 1));
  shm->config.wanIpAddress = quad("10.2.0.9");
  ASSERT_EQ(0, raise(13));
  EXPECT_THAT(tried("/sbin/ip address show dev eth1"), AllOf(HasSubstr("10.2.0.9/24"), Not(HasSubstr("10.2.0.1/24"))));
}

}  // namespace
}  // namespace kestrove::testing
