// SPDX-License-Identifier: Apache-2.0
// Programs that are missing or slow, and a caller without privilege.

#include <errno.h>
#include <gmock/gmock.h>
#include <time.h>
#include <unistd.h>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::IsEmpty;

TEST(Adversity, MissingProgramsAreIgnored) {
  for (const char* path : {"/usr/bin/init-bridging", "/usr/sbin/brctl", "/sbin/vconfig", "/sbin/ifconfig"}) {
    ASSERT_EQ(0, unlink(path)) << path;
  }
  EXPECT_EQ(0, turnOnBridge("eth0", "eth1"));
  EXPECT_EQ(0, turnOffBridge("eth0", "eth1"));
  EXPECT_EQ(0, shm_vconfig_add2("eth0", 1, 2));
  EXPECT_EQ(0, shm_ifconfig_down1("eth0", 3));
  EXPECT_EQ(9u, shellLines().size());
}

TEST(Adversity, SlowProgramsAreWaitedFor) {
  writeFile("/run/kestrove/answers/vconfig.sleep", "1");
  time_t start = time(nullptr);
  EXPECT_EQ(0, shm_vconfig_add1("eth0", 12));
  EXPECT_LE(start + 1, time(nullptr));
}

TEST(Adversity, WithoutPrivilegeNothingIsDone) {
  ASSERT_EQ(0, setresuid(65534, 65534, 65534));
  EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_ifconfig("lo", quad("10.0.0.1"), quad("255.0.0.0"), 0));
  EXPECT_EQ(EPERM, errno);
  EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_if6config("lo", ip6("fd00::1").data(), 64, 0));
  EXPECT_FAILS_WITH(SHM_ESYSTEM, getIfaceIndex("lo"));
  EXPECT_EQ(-1, set_iface_up("lo"));
  EXPECT_EQ(-1, set_iface_down("lo"));
  EXPECT_EQ(-1, addArpEntry(quad("10.0.0.2"), "02:00:00:00:00:01", 4));
  EXPECT_EQ(0, br_init());
  EXPECT_EQ(EPERM, br_add_bridge("br0"));
  EXPECT_EQ(0, shm_netlinkConfig("lo", quad("10.0.0.1"), quad("255.0.0.0"), 0, 1));
  EXPECT_EQ(EPERM, errno) << "the kernel's refusal shows here alone";
  EXPECT_EQ(0, turnOnBridge("eth0", "eth1"));
  EXPECT_THAT(shellLines(), IsEmpty()) << "no command runs as another user";
}

}  // namespace
}  // namespace kestrove::testing
