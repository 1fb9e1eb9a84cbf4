// SPDX-License-Identifier: Apache-2.0
// IPv6 addresses: the list of the kernel, and changes against the real kernel.

#include <errno.h>
#include <gmock/gmock.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/kernel.h"
#include "tests/support/kernel_calls.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

using Address = std::array<uint8_t, 16>;

// From here on this process sees the text as the kernel's list. The folder is covered: the kernel throws off what is
// mounted on its files.
void replaceList(const std::string& text) {
  mkdir("/tmp/net", 0755);
  ASSERT_EQ(0, mount("/tmp/net", "/proc/self/net", nullptr, MS_BIND, nullptr)) << strerror(errno);
  writeFile("/tmp/net/if_inet6", text);
}

void removeList() {
  replaceList("");
  unlink("/tmp/net/if_inet6");
}

std::string line(const std::string& digits, const std::string& name) {
  return digits + " 02 40 00 80     " + name + "\n";
}

std::string show(const char* name) { return tried(std::string("/sbin/ip -6 -o address show dev ") + name); }

class Ipv6 : public ::testing::Test {
 protected:
  void SetUp() override { watchKernel(Kernel::kReal); }
  Address list_[7] = {};
};

TEST_F(Ipv6, ListHasTheAddressesOfTheInterface) {
  replaceList(line("fd000010000000000000000000000003", "eth0") + line("fd000010000000000000000000000004", "eth1"));
  EXPECT_EQ(1, getIpv6Addrs("eth0", list_));
  EXPECT_EQ(ip6("fd00:10::3"), list_[0]);
  EXPECT_EQ(Address{}, list_[1]);
}

TEST_F(Ipv6, NameIsSoughtAnywhereInTheLine) {
  replaceList(line("fd000010000000000000000000000003", "eth0.12") + line("fd000010000000000000000000000004", "eth1"));
  EXPECT_EQ(1, getIpv6Addrs("eth0", list_));
  EXPECT_EQ(2, getIpv6Addrs("", list_));
  EXPECT_EQ(0, getIpv6Addrs("eth2", list_));
}

TEST_F(Ipv6, SevenAddressesAreTheMost) {
  std::string text;
  for (char digit : std::string("12345678")) text += line(std::string(31, '0') + digit, "eth0");
  replaceList(text);
  EXPECT_EQ(7, getIpv6Addrs("eth0", list_));
  EXPECT_EQ(ip6("::7"), list_[6]);
}

TEST_F(Ipv6, AnAddressThatDoesNotParseFails) {
  for (const char* digits : {"fd0000100000000000000000000000", "fd00001000000000000000000000000003", "",
                             "zz000010000000000000000000000003", "fd00:10::3"}) {
    replaceList(line(digits, "eth0"));
    EXPECT_EQ(-1, getIpv6Addrs("eth0", list_)) << digits;
  }
}

TEST_F(Ipv6, WithoutTheListItFails) {
  removeList();
  shm_errno = 99;
  EXPECT_EQ(-1, getIpv6Addrs("eth0", list_));
  EXPECT_EQ(99u, shm_errno);
  EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_if6config("eth0", ip6("fd00:77::1").data(), 64, 0));
}

TEST_F(Ipv6, NullIsRefused) {
  EXPECT_FAILS_WITH(SHM_EINVAL, getIpv6Addrs("eth0", nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getIpv6Addrs(nullptr, list_));
  EXPECT_FAILS_WITH(SHM_EINVAL, getIfaceIndex(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_if6config(nullptr, list_, 64, 0));
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_if6config("eth0", nullptr, 64, 0));
  EXPECT_THAT(socketsOpened(), IsEmpty());
}

TEST_F(Ipv6, AddedAddressIsOnTheInterfaceWhichIsUp) {
  EXPECT_EQ(0, shm_if6config("eth0", ip6("fd00:77::1").data(), 64, 0));
  EXPECT_THAT(show("eth0"), HasSubstr("fd00:77::1/64"));
  EXPECT_THAT(tried("/sbin/ip -o link show dev eth0"), HasSubstr("UP"));
  std::string index = std::to_string(getIfaceIndex("eth0"));
  EXPECT_EQ("SIOCSIFADDR fd00:77::1/64 index " + index, kernelCalls().at(1));
  EXPECT_THAT(socketsOpened(), ::testing::Contains("10/3/255"));
}

TEST_F(Ipv6, OtherFlagsOutliveTheRaising) {
  tried("/sbin/ip link set eth0 promisc on");
  ASSERT_EQ(0, shm_if6config("eth0", ip6("fd00:77::1").data(), 64, 0));
  EXPECT_THAT(tried("/sbin/ip -o link show dev eth0"), AllOf(HasSubstr("PROMISC"), HasSubstr("UP")));
}

TEST_F(Ipv6, AnInterfaceThatIsUpIsLeftAlone) {
  tried("/sbin/ip link set eth0 up");
  ASSERT_EQ(0, shm_if6config("eth0", ip6("fd00:77::1").data(), 64, 0));
  EXPECT_EQ("SIOCGIFFLAGS eth0", kernelCalls().back());
}

TEST_F(Ipv6, AddressThatIsThereIsNotAddedAgain) {
  ASSERT_EQ(0, shm_if6config("eth0", ip6("fd00:77::1").data(), 64, 0));
  watchKernel(Kernel::kReal);
  EXPECT_EQ(0, shm_if6config("eth0", ip6("fd00:77::1").data(), 64, 0));
  EXPECT_THAT(kernelCalls(), ElementsAre("SIOCGIFINDEX eth0"));
}

TEST_F(Ipv6, DeletedAddressIsGone) {
  ASSERT_EQ(0, shm_if6config("eth0", ip6("fd00:77::1").data(), 64, 0));
  EXPECT_EQ(0, shm_if6config("eth0", ip6("fd00:77::1").data(), 64, 1));
  EXPECT_THAT(show("eth0"), Not(HasSubstr("fd00:77::1")));
  shm_errno = 99;
  EXPECT_EQ(-1, shm_if6config("eth0", ip6("fd00:77::1").data(), 64, 1));
  EXPECT_EQ(99u, shm_errno) << "a refused deletion sets no code";
}

TEST_F(Ipv6, OtherOperationsAndLongNamesAreRefused) {
  for (int op : {2, 3, -1}) EXPECT_FAILS_WITH(SHM_EINVAL, shm_if6config("eth0", ip6("::1").data(), 64, op));
  for (size_t length : {16u, 300u}) {
    EXPECT_FAILS_WITH(SHM_EINVAL, shm_if6config(std::string(length, 'a').c_str(), ip6("::1").data(), 64, 0));
  }
  EXPECT_THAT(socketsOpened(), IsEmpty());
}

TEST_F(Ipv6, UnknownInterfaceIsASystemErrorForBothOperations) {
  for (const char* name : {"nosuch", "", "abcdefghijklmno"}) {
    EXPECT_FAILS_WITH(SHM_ESYSTEM, getIfaceIndex(name));
    EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_if6config(name, ip6("fd00:77::1").data(), 64, 0));
    EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_if6config(name, ip6("fd00:77::1").data(), 64, 1));
  }
  EXPECT_FAILS_WITH(SHM_ESYSTEM, getIfaceIndex(std::string(300, 'a').c_str()));
}

TEST_F(Ipv6, IndexIsTheKernels) {
  EXPECT_EQ(tried("/bin/cat /sys/class/net/eth0/ifindex"), std::to_string(getIfaceIndex("eth0")) + "\n");
}

TEST_F(Ipv6, PrefixBeyond128IsRefusedByTheKernel) {
  EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_if6config("eth0", ip6("fd00:77::1").data(), 129, 0));
}

TEST_F(Ipv6, EachRefusedCallFailsWithoutADescriptorLeft) {
  int before = openDescriptors();
  failCall("socket", 1, EMFILE);
  EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_if6config("eth0", ip6("fd00:77::1").data(), 64, 0));
  failCall("socket", 1, EMFILE);
  EXPECT_FAILS_WITH(SHM_ESYSTEM, getIfaceIndex("eth0"));
  for (int n = 2; n <= 4; ++n) {  // the address, reading the flags, writing them
    tried("/sbin/ip link set eth0 down");
    tried("/sbin/ip -6 address flush dev eth0");
    failCall("ioctl", n, EPERM);
    EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_if6config("eth0", ip6("fd00:77::1").data(), 64, 0));
  }
  EXPECT_EQ(before, openDescriptors());
}

TEST_F(Ipv6, WithoutIpv6OnTheInterfaceAddingIsASystemError) {
  writeFile("/proc/sys/net/ipv6/conf/eth0/disable_ipv6", "1");
  EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_if6config("eth0", ip6("fd00:77::1").data(), 64, 0));
}

}  // namespace
}  // namespace kestrove::testing
