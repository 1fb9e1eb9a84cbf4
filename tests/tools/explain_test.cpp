// SPDX-License-Identifier: Apache-2.0
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
using ::testing::UnorderedElementsAre;

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

  // "KIND RESULT TEXT" of each effect but the saved configuration, which every change has.
  static std::vector<std::string> effects(const std::string& command) {
    std::vector<std::string> lines = allEffects(command);
    std::erase(lines, "file 0 write /etc/config/kestrove.conf");
    return lines;
  }

  static std::vector<std::string> allEffects(const std::string& command) {
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
          HasSubstr("ioctl 0 SIOCSIFADDR fd00:10::9/64 index "), "signal held back SIGUSR1 to 77", "bit set mode"));
}

TEST_F(ExplainTest, WhatStaysInTheStoreHasNoEffects) {
  EXPECT_THAT(effects("set sysName 'branch seven'"), IsEmpty());
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_THAT(allEffects("route add 172.20.0.0/16 192.168.10.3"), IsEmpty());
  EXPECT_EQ("nothing outside the store changes\n", tracedCtl("explain set sysName x").out);
}

TEST_F(ExplainTest, ForAReaderTheTextStandsLast) {
  EXPECT_EQ(
      "ioctl    0              SIOCADDRT 172.20.0.0/16 via 192.168.10.3 flags UP|GATEWAY\n"
      "file     0              write /etc/config/kestrove.conf\n",
      tracedCtl("explain route add 172.20.0.0/16 192.168.10.3").out);
}

TEST_F(ExplainTest, ARefusedCommandSaysWhy) {
  Ran ran = explain("route remove 172.20.0.0/16");
  EXPECT_EQ(1, ran.status);
  EXPECT_EQ(1, ran.json()["exit"]);
  EXPECT_THAT(ran.err, HasSubstr("172.20.0.0/16: The requested entity does not exist"));
  Ran usage = explain("frobnicate");
  EXPECT_EQ(2, usage.json()["exit"]);
  EXPECT_EQ(2, usage.status);
}

TEST_F(ExplainTest, FilesEventsBitsAndTheSignalAreNamed) {
  shm->taskPids[kEngineTask] = 77;
  EXPECT_THAT(allEffects("--user operator --source 4 set compression on"),
              UnorderedElementsAre("file 0 write /var/log/kestrove/event.log", "file 0 write /etc/config/kestrove.conf",
                                   "signal held back SIGUSR1 to 77", "event logged System Compression On (operator)",
                                   "bit set compression"));
}

TEST_F(ExplainTest, AClearedLogIsItsOneEvent) {
  logEvent(21, 2, "admin");
  logEvent(21, 2, "admin");
  EXPECT_THAT(allEffects("--user operator events clear"),
              ElementsAre("file 0 write /var/log/kestrove/event.log", HasSubstr("event logged ")));
}

TEST_F(ExplainTest, FilesThatTheCommandNamesAreSeen) {
  ASSERT_EQ(0, run("mkdir -p '/tmp/my files'").status);
  writeFile("/tmp/my files/some.conf", "LAN_MTU 1400\n");
  EXPECT_EQ(0, explain("load '/tmp/my files/some.conf'").status);
  Ran here = run("cd '/tmp/my files' && ASAN_OPTIONS=detect_leaks=0 " KESTROVECTL " explain load some.conf");
  EXPECT_EQ(0, here.status) << here.err;
  EXPECT_THAT(here.err, HasSubstr("loaded /tmp/my files/some.conf"));
  Ran none = explain("load /tmp/none.conf");
  EXPECT_EQ(5, none.status);
  EXPECT_EQ(5, none.json()["exit"]);
}

TEST_F(ExplainTest, TheStatusIsTheCommands) {
  EXPECT_EQ(1, explain("set minRate 5").status);
  EXPECT_EQ(2, explain("set wanLinkRate fast").status);
  shm->filterTable.rule[0].target = -5;
  EXPECT_EQ(4, explain("check").status);
  EXPECT_THAT(tracedCtl("explain set wanLinkRate fast").err, HasSubstr("the command itself ends with status 2"));
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
