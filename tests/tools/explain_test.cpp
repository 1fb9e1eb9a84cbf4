// explain from the outside: the effects of a change, and a store and a kernel that stay as they are.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <string.h>
#include <unistd.h>

#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

constexpr int kBridge = 4;
constexpr int kEngineTask = 4;

class ExplainTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    strcpy(shm->config.physicalLanInterfaceName, "eth1");
    strcpy(shm->config.bridgeRouterPhysicalName, "eth0");
    strcpy(shm->config.physicalWanInterfaceName, "eth0");
    shm->config.singleInterfaceMode = SHM_OFF;
    ManagementAddress address = {4, 1, inet_addr("192.168.10.9"), inet_addr("255.255.255.0"), {}, 0, kBridge};
    ManagementAddress address6 = {6, 1, 0, 0, {}, 64, kBridge};
    inet_pton(AF_INET6, "fd00:10::9", address6.address6);
    shm->managementAddress[0] = address;
    shm->managementAddress[1] = address6;
    shm->managementAddressCount = 2;
  }

  static std::string image() { return {reinterpret_cast<const char*>(shm), SHM_SIZE}; }

  static Ran explain(const std::string& command) {
    const std::string before = image();
    Ran ran = tracedCtl("--json explain " + command);
    EXPECT_EQ(before, image()) << "the running store";
    EXPECT_EQ(1, run("/bin/ip link show br0").status) << "the running kernel";
    return ran;
  }

  // "KIND RESULT TEXT" of each effect.
  static std::vector<std::string> effects(const std::string& command) {
    Ran ran = explain(command);
    EXPECT_EQ(0, ran.status) << ran.err;
    std::vector<std::string> lines;
    const Json result = ran.json();
    for (const Json& row : result["effects"]) {
      lines.push_back(row["kind"].get<std::string>() + " " + row["result"].get<std::string>() + " " +
                      row["effect"].get<std::string>());
    }
    return lines;
  }
};

TEST_F(ExplainTest, ARouteIsOneRequest) {
  EXPECT_THAT(effects("route add 172.20.0.0/16 192.168.10.3"),
              ElementsAre("ioctl 0 SIOCADDRT 172.20.0.0/16 via 192.168.10.3 flags UP|GATEWAY"));
  EXPECT_THAT(effects("route add 172.20.0.1/32 192.168.10.3"),
              ElementsAre("ioctl 0 SIOCADDRT 172.20.0.1/32 via 192.168.10.3 flags UP|GATEWAY|HOST"));
}

TEST_F(ExplainTest, AnIpv6RouteIsOneRequest) {
  EXPECT_THAT(effects("route6 add fd00:77::/32 fd00:10::3"),
              ElementsAre(MatchesRegex("ioctl 0 SIOCADDRT fd00:77::/32 via fd00:10::3 index [0-9]+ flags UP")));
}

TEST_F(ExplainTest, AnAddressIsAMessageWithItsAnswer) {
  EXPECT_THAT(effects("address add 192.168.77.3/24 --interface bridge"),
              ElementsAre(MatchesRegex("netlink 0 RTM_NEWADDR flags REQUEST.ACK.EXCL.CREATE seq 1 AF_INET prefix 24 "
                                       "flags PERMANENT scope 0 index [0-9]+ IFA_LABEL br0 IFA_LOCAL 192.168.77.3 "
                                       "IFA_BROADCAST 192.168.77.255 bytes 30000000140005060100000000000000[0-9a-f]+"),
                          "ioctl 0 SIOCSIFFLAGS br0 UP"));
  EXPECT_THAT(effects("address add fd00:10::44/64 --br0"),
              ElementsAre(MatchesRegex("ioctl 0 SIOCSIFADDR fd00:10::44/64 index [0-9]+")));
}

TEST_F(ExplainTest, AModeChangeShowsItsStepsInOrder) {
  shm->taskPids[kEngineTask] = 77;
  EXPECT_THAT(
      effects("mode single 12 13"),
      ElementsAre(
          "shell 0 /usr/sbin/brctl delif br0 eth0  > /dev/null 2>&1",
          "shell 0 /usr/sbin/brctl delif br0 eth1  > /dev/null 2>&1", "shell 0 ifconfig br0 down  > /dev/null 2>&1 ",
          "shell 0 /usr/sbin/brctl delbr br0  > /dev/null 2>&1", "shell 0 /sbin/vconfig add eth0 12 > /dev/null 2>&1",
          "shell 0 /sbin/vconfig add eth0 13 > /dev/null 2>&1", "ioctl 0 SIOCSIFADDR eth0.12 0.0.0.0",
          "ioctl 0 SIOCSIFFLAGS eth0.12 UP|BROADCAST|MULTICAST", "ioctl 0 SIOCSIFADDR eth1 0.0.0.0",
          "ioctl 0 SIOCSIFFLAGS eth1 UP|BROADCAST|MULTICAST", "ioctl 0 SIOCSIFADDR eth0.13 0.0.0.0",
          "ioctl 0 SIOCSIFFLAGS eth0.13 UP|BROADCAST|MULTICAST",
          "shell 0 /usr/bin/init-bridging eth0.12 eth1  > /dev/null 2>&1", "shell 0 ifconfig br0 up  > /dev/null 2>&1 ",
          HasSubstr("netlink 0 RTM_NEWADDR "), "ioctl 0 SIOCSIFFLAGS br0 UP",
          HasSubstr("ioctl 0 SIOCSIFADDR fd00:10::9/64 index "), "signal held back SIGUSR1 to 77"));
}

TEST_F(ExplainTest, WhatStaysInTheStoreHasNoEffects) {
  EXPECT_THAT(effects("set sysName 'branch seven'"), IsEmpty());
  EXPECT_EQ("nothing outside the store changes\n", tracedCtl("explain set sysName x").out);
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_THAT(effects("route add 172.20.0.0/16 192.168.10.3"), IsEmpty());
}

TEST_F(ExplainTest, ForAReaderTheTextStandsLast) {
  EXPECT_EQ("ioctl    0              SIOCADDRT 172.20.0.0/16 via 192.168.10.3 flags UP|GATEWAY\n",
            tracedCtl("explain route add 172.20.0.0/16 192.168.10.3").out);
}

TEST_F(ExplainTest, ARefusedCommandSaysWhy) {
  Ran ran = explain("route remove 172.20.0.0/16");
  EXPECT_EQ(1, ran.status);
  EXPECT_EQ(1, ran.json()["exit"]);
  EXPECT_THAT(ran.err, HasSubstr("172.20.0.0/16: The requested entity does not exist"));
  EXPECT_EQ(2, explain("frobnicate").json()["exit"]);
}

TEST_F(ExplainTest, WhatItCannotDoIsNamed) {
  EXPECT_THAT(ctl("explain").err, HasSubstr("a command to explain is needed"));
  EXPECT_EQ(2, ctl("explain").status);
  EXPECT_THAT(ctl("explain explain save").err, HasSubstr("explain does not explain itself"));
  Ran ran = ctl("explain-inside /etc/hostname -- save");
  EXPECT_EQ(5, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("/etc/hostname: no image of a store"));
}

}  // namespace
}  // namespace kestrove::testing
