// SPDX-License-Identifier: Apache-2.0
// Addresses and flags against the real kernel, read back by its own tool.

#include <errno.h>
#include <gmock/gmock.h>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/kernel.h"
#include "tests/support/kernel_calls.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

std::string show(const char* name) { return tried(std::string("/sbin/ip -json address show dev ") + name); }
std::string flagsOf(const char* name) { return tried(std::string("/sbin/ip -o link show dev ") + name); }

class Ports : public ::testing::Test {
 protected:
  void SetUp() override { watchKernel(Kernel::kReal); }
};

TEST_F(Ports, AddressMaskAndComputedBroadcastAreInTheKernel) {
  EXPECT_EQ(0, shm_ifconfig("eth0", quad("192.168.1.10"), quad("255.255.255.0"), 0));
  EXPECT_THAT(show("eth0"), AllOf(HasSubstr("\"local\":\"192.168.1.10\",\"prefixlen\":24"),
                                  HasSubstr("\"broadcast\":\"192.168.1.255\"")));
  EXPECT_THAT(flagsOf("eth0"), AllOf(HasSubstr("UP"), HasSubstr("MULTICAST"), HasSubstr("BROADCAST")));
}

TEST_F(Ports, GivenBroadcastIsKept) {
  EXPECT_EQ(0, shm_ifconfig("eth0", quad("192.168.1.10"), quad("255.255.255.0"), quad("192.168.1.127")));
  EXPECT_THAT(show("eth0"), HasSubstr("\"broadcast\":\"192.168.1.127\""));
}

TEST_F(Ports, ZerosClearTheAddressAndRaiseTheInterface) {
  ASSERT_EQ(0, shm_ifconfig("eth0", quad("192.168.1.10"), quad("255.255.255.0"), 0));
  EXPECT_EQ(0, shm_ifconfig("eth0", 0, 0, 0));
  EXPECT_THAT(show("eth0"), Not(HasSubstr("192.168.1.10")));
  EXPECT_THAT(flagsOf("eth0"), HasSubstr("UP"));
}

TEST_F(Ports, MaskWithHolesIsRefusedByTheKernel) {
  EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_ifconfig("eth0", quad("10.0.0.1"), quad("255.0.255.0"), 0));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(Ports, UnknownNamesAreSystemErrors) {
  for (const char* name : {"", "nosuch", "eth0;reboot", "$(reboot)", "abcdefghijklmno"}) {
    EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_ifconfig(name, 0, 0, 0));
    EXPECT_EQ(ENODEV, errno) << name;
  }
}

TEST_F(Ports, RaisingClearsEveryOtherFlag) {
  tried("/sbin/ip link set eth0 promisc on");
  ASSERT_THAT(flagsOf("eth0"), HasSubstr("PROMISC"));
  EXPECT_EQ(0, set_iface_up("eth0"));
  EXPECT_THAT(kernelCalls(), ::testing::ElementsAre("SIOCGIFFLAGS eth0", "SIOCSIFFLAGS eth0 0x1"));
  EXPECT_THAT(flagsOf("eth0"), AllOf(HasSubstr("UP"), Not(HasSubstr("PROMISC"))));
}

TEST_F(Ports, TakingDownKeepsTheOtherFlags) {
  tried("/sbin/ip link set eth0 up promisc on");
  EXPECT_EQ(0, set_iface_down("eth0"));
  EXPECT_THAT(flagsOf("eth0"), AllOf(HasSubstr("PROMISC"), Not(HasSubstr("UP,")), HasSubstr("state DOWN")));
}

TEST_F(Ports, RaisingAnUnknownInterfaceFailsTakingItDownDoesNot) {
  for (const std::string& name : {std::string("nosuch"), std::string(), std::string(300, 'e')}) {
    EXPECT_EQ(-1, set_iface_up(name.c_str()));
    EXPECT_EQ(ENODEV, errno);
    EXPECT_EQ(0, set_iface_down(name.c_str()));
  }
}

TEST_F(Ports, ALongNameIsNotCutToAnInterfaceThatExists) {
  tried("/sbin/ip link add abcdefghijklmno type veth peer name peer0");
  EXPECT_EQ(-1, set_iface_up("abcdefghijklmnop"));
  EXPECT_THAT(flagsOf("abcdefghijklmno"), HasSubstr("state DOWN"));
}

TEST_F(Ports, FlagsWithoutASocketOrARequest) {
  int before = openDescriptors();
  for (int (*change)(const char*) : {set_iface_up, set_iface_down}) {
    watchKernel(Kernel::kReal);
    failCall("socket", 1, EMFILE);
    EXPECT_EQ(-1, change("eth0"));
    failCall("ioctl", 2, EPERM);
    EXPECT_EQ(-1, change("eth0"));
    EXPECT_FAILS_WITH(SHM_EINVAL, change(nullptr));
  }
  EXPECT_EQ(before, openDescriptors());
}

TEST_F(Ports, NetlinkAddsBesideWhatIsThereAndDeletes) {
  ASSERT_EQ(0, shm_ifconfig("eth0", quad("192.168.1.10"), quad("255.255.255.0"), 0));
  EXPECT_EQ(0, shm_netlinkConfig("eth0", quad("10.1.2.3"), quad("255.255.0.0"), 0, 1));
  EXPECT_THAT(show("eth0"), AllOf(HasSubstr("192.168.1.10"), HasSubstr("\"local\":\"10.1.2.3\",\"prefixlen\":16"),
                                  HasSubstr("\"broadcast\":\"10.1.255.255\""), HasSubstr("\"label\":\"eth0\"")));
  EXPECT_EQ(0, shm_netlinkConfig("eth0", quad("10.1.2.3"), quad("255.255.0.0"), 0, -1));
  EXPECT_THAT(show("eth0"), AllOf(HasSubstr("192.168.1.10"), Not(HasSubstr("10.1.2.3"))));
}

TEST_F(Ports, RefusedNetlinkChangeShowsInErrnoAlone) {
  ASSERT_EQ(0, shm_netlinkConfig("eth0", quad("10.1.2.3"), quad("255.255.0.0"), 0, 0));
  errno = 0;
  EXPECT_EQ(0, shm_netlinkConfig("eth0", quad("10.1.2.3"), quad("255.255.0.0"), 0, 0));
  EXPECT_EQ(EEXIST, errno);
  EXPECT_EQ(0, shm_netlinkConfig("eth0", quad("10.9.9.9"), quad("255.255.0.0"), 0, -1));
  EXPECT_EQ(EADDRNOTAVAIL, errno);
}

}  // namespace
}  // namespace kestrove::testing
