// SPDX-License-Identifier: Apache-2.0
// Requests of shm_ifconfig, in order, and what each failure leaves.

#include <errno.h>
#include <gmock/gmock.h>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/kernel_calls.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Ifconfig : public ::testing::Test {
 protected:
  void SetUp() override { watchKernel(Kernel::kPretend); }
};

TEST_F(Ifconfig, SetsAddressMaskGivenBroadcastAndFlags) {
  EXPECT_EQ(0, shm_ifconfig("eth0", quad("192.168.1.10"), quad("255.255.255.0"), quad("192.168.1.127")));
  EXPECT_THAT(kernelCalls(), ElementsAre("SIOCSIFADDR eth0 192.168.1.10", "SIOCSIFNETMASK eth0 255.255.255.0",
                                         "SIOCSIFBRDADDR eth0 192.168.1.127", "SIOCSIFFLAGS eth0 0x1003"));
  EXPECT_THAT(socketsOpened(), ElementsAre("17/3/3"));
}

TEST_F(Ifconfig, MissingBroadcastComesFromTheMask) {
  EXPECT_EQ(0, shm_ifconfig("eth0", quad("192.168.1.10"), quad("255.255.255.0"), 0));
  EXPECT_EQ("SIOCSIFBRDADDR eth0 192.168.1.255", kernelCalls().at(2));
}

TEST_F(Ifconfig, WithoutMaskTheGivenBroadcastIsSetAlone) {
  EXPECT_EQ(0, shm_ifconfig("eth0", quad("10.0.0.1"), 0, quad("10.0.0.255")));
  EXPECT_THAT(kernelCalls(),
              ElementsAre("SIOCSIFADDR eth0 10.0.0.1", "SIOCSIFBRDADDR eth0 10.0.0.255", "SIOCSIFFLAGS eth0 0x1003"));
}

TEST_F(Ifconfig, WithoutMaskAndBroadcastNoBroadcastIsSet) {
  EXPECT_EQ(0, shm_ifconfig("eth0", quad("10.0.0.1"), 0, 0));
  EXPECT_THAT(kernelCalls(), ElementsAre("SIOCSIFADDR eth0 10.0.0.1", "SIOCSIFFLAGS eth0 0x1003"));
}

TEST_F(Ifconfig, ZeroAddressClearsAndStillRaises) {
  EXPECT_EQ(0, shm_ifconfig("eth0", 0, quad("255.0.0.0"), quad("10.255.255.255")));
  EXPECT_THAT(kernelCalls(), ElementsAre("SIOCSIFADDR eth0 0.0.0.0", "SIOCSIFFLAGS eth0 0x1003"));
}

TEST_F(Ifconfig, NameOfFifteenCharactersIsTaken) {
  EXPECT_EQ(0, shm_ifconfig("abcdefghijklmno", 0, 0, 0));
  EXPECT_EQ("SIOCSIFADDR abcdefghijklmno 0.0.0.0", kernelCalls().at(0));
}

TEST_F(Ifconfig, LongerNamesAreRefusedBeforeASocketIsOpened) {
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_ifconfig("abcdefghijklmnop", 0, 0, 0));
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_ifconfig(std::string(300, 'a').c_str(), 0, 0, 0));
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_ifconfig(nullptr, 0, 0, 0));
  EXPECT_THAT(socketsOpened(), IsEmpty());
}

TEST_F(Ifconfig, RefusedSocketIsASystemError) {
  failCall("socket", 1, EMFILE);
  EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_ifconfig("eth0", 0, 0, 0));
  EXPECT_THAT(kernelCalls(), IsEmpty());
}

TEST_F(Ifconfig, EachRefusedRequestEndsTheWorkAndKeepsItsError) {
  int before = openDescriptors();
  for (size_t n = 1; n <= 4; ++n) {
    watchKernel(Kernel::kPretend);
    failCall("ioctl", static_cast<int>(n), EPERM);
    EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_ifconfig("eth0", quad("10.0.0.1"), quad("255.0.0.0"), 0));
    EXPECT_EQ(EPERM, errno);
    EXPECT_EQ(n, kernelCalls().size());
    EXPECT_EQ(before, openDescriptors());
  }
}

}  // namespace
}  // namespace kestrove::testing
