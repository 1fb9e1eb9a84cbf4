// SPDX-License-Identifier: Apache-2.0
// Bridge, VLANs and forwarding by command line: every line whole, from the recorder.

#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>

#include "kestrove/kestrove.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(Commands, BridgeOn) {
  EXPECT_EQ(0, turnOnBridge("eth0", "eth1"));
  EXPECT_THAT(shellLines(),
              ElementsAre("/usr/bin/init-bridging eth0 eth1  > /dev/null 2>&1", "ifconfig br0 up  > /dev/null 2>&1 "));
  EXPECT_THAT(programs(), ElementsAre("/usr/bin/init-bridging eth0 eth1", "ifconfig br0 up"));
}

TEST(Commands, BridgeOff) {
  EXPECT_EQ(0, turnOffBridge("eth0", "eth1"));
  EXPECT_THAT(shellLines(),
              ElementsAre("/usr/sbin/brctl delif br0 eth0  > /dev/null 2>&1",
                          "/usr/sbin/brctl delif br0 eth1  > /dev/null 2>&1", "ifconfig br0 down  > /dev/null 2>&1 ",
                          "/usr/sbin/brctl delbr br0  > /dev/null 2>&1"));
}

TEST(Commands, Forwarding) {
  EXPECT_EQ(0, turnOnIpfoward("lo"));
  EXPECT_EQ("1\n", readFile("/proc/sys/net/ipv4/conf/lo/forwarding"));
  EXPECT_EQ(0, turnOffIpfoward("lo"));
  EXPECT_EQ("0\n", readFile("/proc/sys/net/ipv4/conf/lo/forwarding"));
  EXPECT_THAT(shellLines(), ElementsAre("echo 1 > /proc/sys/net/ipv4/conf/lo/forwarding",
                                        "echo 0 > /proc/sys/net/ipv4/conf/lo/forwarding"));
}

TEST(Commands, Vlans) {
  EXPECT_EQ(0, shm_vconfig_add1("eth0", 12));
  EXPECT_EQ(0, shm_vconfig_add2("eth0", 13, 14));
  EXPECT_EQ(0, shm_vconfig_rem1("eth0", 12));
  EXPECT_EQ(0, shm_vconfig_rem2("eth0", 13, 4294967295u));
  EXPECT_THAT(
      shellLines(),
      ElementsAre("/sbin/vconfig add eth0 12 > /dev/null 2>&1", "/sbin/vconfig add eth0 13 > /dev/null 2>&1",
                  "/sbin/vconfig add eth0 14 > /dev/null 2>&1", "/sbin/vconfig rem eth0.12 > /dev/null 2>&1",
                  "/sbin/vconfig rem eth0.13 > /dev/null 2>&1", "/sbin/vconfig rem eth0.4294967295 > /dev/null 2>&1"));
}

TEST(Commands, InterfaceDown) {
  EXPECT_EQ(0, shm_ifconfig_down1("eth0", 0));
  EXPECT_EQ(0, shm_ifconfig_down1("eth0", 12));
  EXPECT_THAT(shellLines(),
              ElementsAre("/sbin/ifconfig eth0  down> /dev/null 2>&1", "/sbin/ifconfig eth0.12  down> /dev/null 2>&1"));
}

TEST(Commands, FailingAndMissingProgramsAreIgnored) {
  answer("init-bridging", "rubbish\n", 1);
  answer("ifconfig", "rubbish\n", 127);
  answer("vconfig", "rubbish\n", 3);
  answer("brctl", "rubbish\n", 1);
  EXPECT_EQ(0, turnOnBridge("eth0", "eth1"));
  EXPECT_EQ(0, turnOffBridge("eth0", "eth1"));
  EXPECT_EQ(0, shm_vconfig_add2("eth0", 1, 2));
  EXPECT_EQ(0, shm_ifconfig_down1("eth0", 0));
  EXPECT_EQ(0, turnOnIpfoward("nosuch"));
  EXPECT_EQ(10u, shellLines().size());
}

TEST(Commands, NamesThatAreNotPlainReachNoShell) {
  for (const std::string& name :
       {std::string("-a"), std::string("-"), std::string("eth0;reboot"), std::string("$(reboot)"), std::string("a b"),
        std::string("a\nb"), std::string("../x"), std::string(16, 'a'), std::string(17, 'a') + ".1",
        std::string(16, 'a') + ".x", std::string(16, 'a') + ".", std::string(16, 'a') + ".12345678901",
        std::string(16, 'a') + ".--1", std::string(16, 'a') + ".-", std::string(300, 'a')}) {
    EXPECT_EQ(0, turnOnIpfoward(name.c_str()));
    EXPECT_EQ(0, shm_vconfig_add2(name.c_str(), 1, 2));
    EXPECT_EQ(0, shm_vconfig_rem2(name.c_str(), 1, 2));
    EXPECT_EQ(0, shm_ifconfig_down1(name.c_str(), 0));
    EXPECT_EQ(0, shm_ifconfig_down1(name.c_str(), 1));
  }
  EXPECT_THAT(shellLines(), IsEmpty());
}

TEST(Commands, EmptyNamesRunAsTheyAre) {
  EXPECT_EQ(0, turnOnBridge("", ""));
  EXPECT_EQ(0, turnOffBridge("", ""));
  EXPECT_EQ(0, turnOnIpfoward(""));
  EXPECT_EQ(0, shm_vconfig_add1("", 1));
  EXPECT_EQ(0, shm_vconfig_rem1("", 1));
  EXPECT_EQ(0, shm_ifconfig_down1("", 0));
  EXPECT_EQ(0, shm_ifconfig_down1("", 1));
  EXPECT_THAT(shellLines(),
              ElementsAre("/usr/bin/init-bridging    > /dev/null 2>&1", "ifconfig br0 up  > /dev/null 2>&1 ",
                          "/usr/sbin/brctl delif br0   > /dev/null 2>&1",
                          "/usr/sbin/brctl delif br0   > /dev/null 2>&1", "ifconfig br0 down  > /dev/null 2>&1 ",
                          "/usr/sbin/brctl delbr br0  > /dev/null 2>&1", "echo 1 > /proc/sys/net/ipv4/conf//forwarding",
                          "/sbin/vconfig add  1 > /dev/null 2>&1", "/sbin/vconfig rem .1 > /dev/null 2>&1",
                          "/sbin/ifconfig   down> /dev/null 2>&1", "/sbin/ifconfig .1  down> /dev/null 2>&1"));
  EXPECT_THAT(syslogLines(), IsEmpty());
}

// A program of the caller's folder in place of ifconfig: it leaves a mark.
class OtherPath : public ::testing::Test {
 protected:
  static void putFirst(const std::string& folder, mode_t mode) {
    ASSERT_EQ(0, mkdir(folder.c_str(), 0755));
    writeFile(folder + "/ifconfig", "#!/bin/sh\ntouch /tmp/fooled\n");
    ASSERT_EQ(0, chmod((folder + "/ifconfig").c_str(), 0755));
    ASSERT_EQ(0, chmod(folder.c_str(), mode));
    setenv("PATH", (folder + ":/usr/sbin:/usr/bin:/sbin:/bin").c_str(), 1);
  }
};

TEST_F(OtherPath, IsNotFollowedWhereOthersMayWrite) {
  putFirst("/tmp/programs", 0777);
  EXPECT_EQ(0, turnOnBridge("eth0", "eth1"));
  EXPECT_FALSE(fileExists("/tmp/fooled"));
  EXPECT_THAT(shellLines(),
              ElementsAre("/usr/bin/init-bridging eth0 eth1  > /dev/null 2>&1", "ifconfig br0 up  > /dev/null 2>&1 "))
      << "the line is what it always is";
  EXPECT_THAT(programs(), Contains("ifconfig br0 up"));
  char program[] = "ifconfig";
  char* const vector[] = {program, nullptr};
  EXPECT_EQ(0, runCommand(vector, "/dev/null", "/dev/null"));
  EXPECT_FALSE(fileExists("/tmp/fooled"));
  EXPECT_STREQ("/tmp/programs:/usr/sbin:/usr/bin:/sbin:/bin", getenv("PATH")) << "the caller keeps its own";
}

TEST_F(OtherPath, IsFollowedWhereOnlyRootMayWrite) {
  putFirst("/etc/programs", 0755);
  EXPECT_EQ(0, turnOnBridge("eth0", "eth1"));
  EXPECT_TRUE(fileExists("/tmp/fooled"));
}

TEST(Commands, AVlanOnALongNameIsPlain) {
  std::string name = std::string(16, 'a') + ".4094";
  EXPECT_EQ(0, turnOnIpfoward(name.c_str()));
  EXPECT_THAT(shellLines(), ElementsAre("echo 1 > /proc/sys/net/ipv4/conf/" + name + "/forwarding"));
}

TEST(Commands, RefusedPortKeepsTheOtherCommands) {
  EXPECT_EQ(0, turnOffBridge("eth0;reboot", "eth1"));
  EXPECT_EQ(3u, shellLines().size());
  EXPECT_THAT(syslogLines(),
              ElementsAre("err: command refused, not plain: /usr/sbin/brctl delif %s %s  > /dev/null 2>&1"));
}

TEST(Commands, NullIsRefused) {
  EXPECT_FAILS_WITH(SHM_EINVAL, turnOnBridge(nullptr, "eth1"));
  EXPECT_FAILS_WITH(SHM_EINVAL, turnOnBridge("eth0", nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, turnOffBridge(nullptr, "eth1"));
  EXPECT_FAILS_WITH(SHM_EINVAL, turnOffBridge("eth0", nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, turnOnIpfoward(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, turnOffIpfoward(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_vconfig_add1(nullptr, 1));
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_vconfig_add2(nullptr, 1, 2));
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_vconfig_rem1(nullptr, 1));
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_vconfig_rem2(nullptr, 1, 2));
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_ifconfig_down1(nullptr, 0));
  EXPECT_THAT(shellLines(), IsEmpty());
}

class PhysicalVlans : public StoreTest {};

TEST_F(PhysicalVlans, TakeTheNameOfTheNumber) {
  strcpy(shm->config.physicalLanInterfaceName, "eth1");
  strcpy(shm->config.physicalWanInterfaceName, "eth0");
  EXPECT_EQ(0, shm_vconfig_up(1, 12, 13));
  EXPECT_EQ(0, shm_vconfig_down(0, 12, 13));
  EXPECT_THAT(shellLines(),
              ElementsAre("/sbin/vconfig add eth0 12 > /dev/null 2>&1", "/sbin/vconfig add eth0 13 > /dev/null 2>&1",
                          "/sbin/vconfig rem eth1.12 > /dev/null 2>&1", "/sbin/vconfig rem eth1.13 > /dev/null 2>&1"));
}

TEST_F(PhysicalVlans, NumberWithoutANameIsRefused) {
  for (int kind : {2, 6, -1}) {
    EXPECT_FAILS_WITH(SHM_EINVAL, shm_vconfig_up(kind, 1, 2));
    EXPECT_FAILS_WITH(SHM_EINVAL, shm_vconfig_down(kind, 1, 2));
  }
  EXPECT_THAT(shellLines(), IsEmpty());
}

}  // namespace
}  // namespace kestrove::testing
