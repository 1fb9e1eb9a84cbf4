// SPDX-License-Identifier: Apache-2.0
// Who holds the store's lock.
#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <sys/stat.h>

#include "tests/support/peer.h"
#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

using ::testing::HasSubstr;

class CtlHolderTest : public StoreTest {};

// Holds the lock from the first word on to the second.
int holdIt(const Peer::Line& line) {
  prctl(PR_SET_NAME, "slow (one)");
  shm_lock();
  line.say('l');
  line.hear();
  shm_unlock();
  return 0;
}

TEST_F(CtlHolderTest, NobodyIsSaidSo) {
  Ran ran = ctl("lock");
  EXPECT_EQ(0, ran.status);
  EXPECT_EQ("nobody holds the lock\n", ran.out);
  EXPECT_EQ(false, ctl("--json lock").json()["held"]);
}

TEST_F(CtlHolderTest, TheHolderIsNamedWithItsAge) {
  Peer holder(holdIt);
  ASSERT_EQ('l', holder.line().hear());
  Ran ran = ctl("--json lock");
  EXPECT_EQ(0, ran.status);
  const Json lock = ran.json();
  EXPECT_EQ(holder.pid(), lock["pid"]);
  EXPECT_EQ("slow (one)", lock["program"]);
  EXPECT_EQ("running", lock["state"]);
  EXPECT_EQ(false, lock["released"]);
  EXPECT_GE(lock["heldAtLeastSeconds"].get<double>(), 0.2);
  EXPECT_TRUE(lock["heldAtMostSeconds"].is_number());
  EXPECT_TRUE(lock["waiting"].empty());
  EXPECT_THAT(ctl("lock --seconds 0").out, HasSubstr("slow (one)"));
}

TEST_F(CtlHolderTest, AHolderThatIsStoppedIsNamedSo) {
  Peer holder(holdIt);
  ASSERT_EQ('l', holder.line().hear());
  kill(holder.pid(), SIGSTOP);
  Json lock = Json::object();
  for (int i = 0; i < 100 && lock.value("state", "") != "stopped"; ++i) lock = ctl("--json lock --seconds 0").json();
  EXPECT_EQ("stopped", lock["state"]);
  kill(holder.pid(), SIGCONT);
}

TEST_F(CtlHolderTest, WhoWaitsIsNamedToo) {
  Peer holder(holdIt);
  ASSERT_EQ('l', holder.line().hear());
  Peer waiter(holdIt);
  Json lock;
  for (int i = 0; i < 100 && (lock.is_null() || lock["waiting"].empty()); ++i) {
    lock = ctl("--json lock --seconds 0").json();
  }
  ASSERT_EQ(1u, lock["waiting"].size());
  EXPECT_EQ(waiter.pid(), lock["waiting"][0]["pid"]);
}

TEST_F(CtlHolderTest, ItWaitsForNobodyAndTakesNothing) {
  Peer holder(holdIt);
  ASSERT_EQ('l', holder.line().hear());
  EXPECT_EQ(0, ctl("--wait 0 lock --seconds 0").status);
  EXPECT_TRUE(fileLockHeld());
  holder.line().say('g');
  EXPECT_EQ(0, holder.join());
  EXPECT_FALSE(fileLockHeld());
}

TEST_F(CtlHolderTest, WithoutALockFileOrARightItIsSaid) {
  chmod("/var/lock/shm", 0);
  Ran denied = run("setpriv --bounding-set -dac_override,-dac_read_search " KESTROVECTL " lock");
  EXPECT_EQ(7, denied.status) << denied.out;
  unlink("/var/lock/shm");
  EXPECT_THAT(ctl("lock").out, HasSubstr("nobody holds it: there is no lock file"));
}

}  // namespace
}  // namespace kestrove::testing
