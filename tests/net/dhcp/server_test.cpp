// SPDX-License-Identifier: Apache-2.0
// The real client against a real server on the WAN host.

#include <signal.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include "tests/net/dhcp/dhcp_fixture.h"

namespace kestrove::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Pair;

constexpr char kServer[] =
    "ip netns exec wan dnsmasq --port=0 --interface=eth0 --bind-interfaces --conf-file=/dev/null --user=root"
    " --dhcp-range=192.168.10.100,192.168.10.100,255.255.255.0,1h --dhcp-authoritative --no-ping"
    " --dhcp-option=3,192.168.10.3 --dhcp-option=6,1.1.1.1,8.8.8.8 --dhcp-option=15,example.test"
    " --dhcp-leasefile=/tmp/leases --pid-file=/tmp/dnsmasq.pid";

class ServerTest : public DhcpTest {
 protected:
  void TearDown() override {
    system("[ -f /tmp/dnsmasq.pid ] && kill $(cat /tmp/dnsmasq.pid)");
    system("for file in /var/run/dhcpcd-*.pid; do [ -f $file ] && kill $(cat $file); done 2> /dev/null");
    DhcpTest::TearDown();
  }

  // A client of the test's own in place of the real one.
  static void replaceClient(const char* script) {
    writeFile("/tmp/client", std::string("#!/bin/sh\n") + script);
    chmod("/tmp/client", 0755);
    ASSERT_EQ(0, mount("/tmp/client", "/sbin/dhcpcd", nullptr, MS_BIND, nullptr));
  }
};

TEST_F(ServerTest, LeaseFromTheServer) {
  ASSERT_EQ(0, system(kServer));
  EXPECT_EQ(0, start("eth0", 10));
  EXPECT_THAT(heard(), Contains(Pair(0, "192.168.10.100")));
  EXPECT_THAT(heard(), Contains(Pair(1, "255.255.255.0")));
  EXPECT_THAT(heard(), Contains(Pair(2, "192.168.10.3")));
  EXPECT_THAT(heard(), Contains(Pair(3, "192.168.10.3")));
  EXPECT_THAT(heard(), Contains(Pair(4, "1.1.1.1 8.8.8.8")));
  EXPECT_THAT(heard(), Contains(Pair(5, "example.test")));
}

TEST_F(ServerTest, ClientThatStillRunsIsStopped) {
  ASSERT_EQ(0, system(kServer));
  ASSERT_EQ(0, start("eth0", 10));
  std::string first = readFile(pidFile("eth0"));
  ASSERT_FALSE(first.empty());
  start("eth0", 10);
  EXPECT_THAT(shellLines(), Contains("kill " + first.substr(0, first.find('\n'))));
  int waits = 0;
  while (kill(atoi(first.c_str()), 0) == 0 && ++waits < 500) usleep(10000);
  EXPECT_LT(waits, 500) << "the first client still runs";
}

TEST_F(ServerTest, NoServer) {
  unlink(leaseFile("eth1").c_str());
  EXPECT_EQ(-1, start("eth1", 2));
  EXPECT_THAT(heard(), IsEmpty());
  EXPECT_THAT(syslogLines(), Contains(HasSubstr("err: DHCP err:  address NOT assigned")));
}

TEST_F(ServerTest, NoSuchInterface) { EXPECT_EQ(-1, start("nosuch0", 2)); }

TEST_F(ServerTest, ClientEndedByASignalHasFailed) {
  replaceClient("kill -9 $$\n");
  writeFile(leaseFile("eth1"), "IPADDR='x'\n");
  EXPECT_EQ(-1, start("eth1", 5));
  EXPECT_THAT(heard(), IsEmpty());
  umount2("/sbin/dhcpcd", MNT_DETACH);
}

}  // namespace
}  // namespace kestrove::testing
