// SPDX-License-Identifier: Apache-2.0
// ARP entries: the request, the log, and the real kernel's table.

#include <errno.h>
#include <gmock/gmock.h>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/kernel.h"
#include "tests/support/kernel_calls.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class Arp : public ::testing::Test {
 protected:
  void SetUp() override { watchKernel(Kernel::kReal); }
  static std::string table() { return tried("/sbin/ip neighbour show"); }
};

TEST_F(Arp, RequestCarriesAddressHardwareAndFlags) {
  watchKernel(Kernel::kPretend);
  EXPECT_EQ(0, addArpEntry(quad("10.0.0.2"), "02:00:00:00:01:ff", 4));
  EXPECT_EQ(0, delArpEntry(quad("10.0.0.2")));
  EXPECT_THAT(kernelCalls(), ElementsAre("SIOCSARP 10.0.0.2 02:00:00:00:01:ff flags 4", "SIOCDARP 10.0.0.2"));
  EXPECT_THAT(socketsOpened(), ElementsAre("2/2/0", "2/2/0"));
}

TEST_F(Arp, EntryIsInTheKernelUntilDeleted) {
  ASSERT_EQ(0, shm_ifconfig("eth0", quad("192.168.10.1"), quad("255.255.255.0"), 0));
  EXPECT_EQ(0, addArpEntry(quad("192.168.10.77"), "02:00:00:00:01:ff", 6));
  EXPECT_THAT(table(), AllOf(HasSubstr("192.168.10.77 dev eth0 lladdr 02:00:00:00:01:ff"), HasSubstr("PERMANENT")));
  EXPECT_EQ(0, delArpEntry(quad("192.168.10.77")));
  EXPECT_THAT(table(), Not(HasSubstr("02:00:00:00:01:ff")));
}

TEST_F(Arp, RefusedRequestsAreLoggedUnderOneName) {
  int before = (delArpEntry(quad("203.0.113.1")), openDescriptors());
  clearSyslog();
  shm_errno = 99;
  failCall("ioctl", 1, EPERM);
  EXPECT_EQ(-1, addArpEntry(quad("10.0.0.2"), "02:00:00:00:01:ff", 4));
  failCall("ioctl", 1, ENXIO);
  EXPECT_EQ(-1, delArpEntry(quad("10.0.0.2")));
  EXPECT_THAT(syslogLines(),
              ElementsAre("err: SIOCSARP: Operation not permitted", "err: SIOCSARP: No such device or address"));
  EXPECT_EQ(99u, shm_errno);
  EXPECT_EQ(before, openDescriptors());
}

TEST_F(Arp, MissingSocketIsLogged) {
  failCall("socket", 1, EMFILE);
  EXPECT_EQ(-1, delArpEntry(quad("10.0.0.2")));
  EXPECT_THAT(syslogLines(), ElementsAre("err: socket: Too many open files"));
}

TEST_F(Arp, HardwareTextThatDoesNotParseIsRefused) {
  for (const char* text : {"", "02:00:00:00:01", "rubbish", "zz:00:00:00:01:ff"}) {
    EXPECT_EQ(-1, addArpEntry(quad("10.0.0.2"), text, 4)) << text;
  }
  EXPECT_THAT(kernelCalls(), IsEmpty());
  EXPECT_FAILS_WITH(SHM_EINVAL, addArpEntry(quad("10.0.0.2"), nullptr, 4));
  EXPECT_FAILS_WITH(SHM_EINVAL, setPermArpEntry(quad("10.0.0.2"), nullptr));
}

}  // namespace
}  // namespace kestrove::testing
