// SPDX-License-Identifier: Apache-2.0
// The appliance's ports and the hosts behind them.

#include <gmock/gmock.h>
#include <net/if.h>
#include <stdio.h>
#include <stdlib.h>

#include <string>

#include "sys/stream.h"
#include "tests/support/kernel.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

int statusOf(const std::string& line) { return system((line + " > /dev/null 2>&1").c_str()); }

std::string ping(const std::string& from, const std::string& to) {
  return "ip netns exec " + from + " ping -q -c 1 -W 3 " + to;
}

TEST(Ports, AreUpWithoutAddresses) {
  for (const char* port : {"eth0", "eth1", "eth2"}) {
    EXPECT_THAT(outputOf(std::string("ip link show ") + port), HasSubstr("LOWER_UP"));
    EXPECT_EQ("", outputOf(std::string("ip -4 addr show ") + port));
  }
}

TEST(Ports, HostsAreApartUntilTheBridgeJoinsThem) {
  EXPECT_NE(0, statusOf("ip netns exec lan ping -q -c 1 -W 0.2 192.168.10.3"));
  ASSERT_EQ(0, statusOf("/usr/bin/init-bridging eth0 eth1"));
  EXPECT_EQ(0, statusOf(ping("lan", "192.168.10.3")));
  EXPECT_EQ(0, statusOf(ping("wan", "192.168.10.2")));
  EXPECT_EQ(0, statusOf(ping("lan", "fd00:10::3")));
}

TEST(Ports, ManagementHostReachesItsPort) {
  ASSERT_EQ(0, statusOf("/sbin/ifconfig eth2 192.168.30.1 netmask 255.255.255.0"));
  EXPECT_EQ(0, statusOf(ping("mgmt", "192.168.30.1")));
}

TEST(Vlan, CarriesTrafficToTheHost) {
  ASSERT_EQ(0, statusOf("/sbin/vconfig add eth0 12"));
  ASSERT_EQ(0, statusOf("ip addr add 10.1.12.1/24 dev eth0.12 && ip link set eth0.12 up"));
  ASSERT_EQ(0, statusOf("ip -n wan addr add 10.1.12.2/24 dev eth0.12"));
  EXPECT_EQ(0, statusOf("ping -q -c 1 -W 3 10.1.12.2"));
}

TEST(Vlan, RemovalTakesBothEnds) {
  ASSERT_EQ(0, statusOf("/sbin/vconfig add eth1 12"));
  EXPECT_NE(0u, if_nametoindex("eth1.12"));
  EXPECT_EQ(0, statusOf("ip -n lan link show eth0.12"));
  ASSERT_EQ(0, statusOf("/sbin/vconfig rem eth1.12"));
  EXPECT_EQ(0u, if_nametoindex("eth1.12"));
  EXPECT_NE(0, statusOf("ip -n lan link show eth0.12"));
}

TEST(Vlan, FailuresAreTold) {
  EXPECT_NE(0, statusOf("/sbin/vconfig add eth7 12"));
  EXPECT_NE(0, statusOf("/sbin/vconfig rem eth0.12"));
  EXPECT_NE(0, statusOf("/sbin/vconfig add eth0"));
  EXPECT_NE(0, statusOf("/sbin/vconfig"));
  ASSERT_EQ(0, statusOf("/sbin/vconfig add eth0 12"));
  EXPECT_NE(0, statusOf("/sbin/vconfig add eth0 12"));
}

TEST(Dhcp, ClientWritesItsLeaseDown) {
  ASSERT_EQ(0, statusOf("ip netns exec wan dnsmasq --conf-file=/dev/null --interface=eth0 --bind-interfaces --port=0 "
                        "--dhcp-range=192.168.10.50,192.168.10.60,1h --dhcp-option=option:dns-server,1.1.1.1,8.8.8.8 "
                        "--dhcp-leasefile=/tmp/leases --pid-file=/tmp/dnsmasq.pid"));
  ASSERT_EQ(0, statusOf("/sbin/dhcpcd -t 10 -L  eth0"));
  const std::string lease = readFile("/var/lib/dhcpcd/dhcpcd-eth0.info");
  EXPECT_THAT(lease, HasSubstr("IPADDR='192.168.10.5"));
  EXPECT_THAT(lease, HasSubstr("\nNETMASK='255.255.255.0'\n"));
  EXPECT_THAT(lease, HasSubstr("\nGATEWAYS='192.168.10.3'\n"));
  EXPECT_THAT(lease, HasSubstr("\nDNSSERVERS='1.1.1.1 8.8.8.8'\n"));
  EXPECT_EQ(0, statusOf("kill -0 `cat /var/run/dhcpcd-eth0.pid`"));
}

}  // namespace
}  // namespace kestrove::testing
