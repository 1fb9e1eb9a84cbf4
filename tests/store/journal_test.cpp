// SPDX-License-Identifier: Apache-2.0
// What the next holder of the lock makes of the words that a dead process left, whatever they are.
#include "store/journal.h"

#include <gmock/gmock.h>
#include <stdlib.h>
#include <string.h>

#include <memory>
#include <random>

#include "tests/store/death_fixture.h"
#include "tests/support/peer.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class JournalTest : public DeathTest {
 protected:
  void SetUp() override {
    DeathTest::SetUp();
    syslogLines();
    clearSyslog();
  }
  static void leave(const Note& note) { Journal(*shm).begin(note); }
  static bool quiet() {
    const uint8_t nothing[sizeof shm->reserved32] = {};
    return memcmp(shm->reserved32, nothing, sizeof nothing) == 0;
  }
  static void lockOnce() {
    ASSERT_EQ(0, shm_lock());
    ASSERT_EQ(0, shm_unlock());
  }
};

TEST_F(JournalTest, ASoundStoreIsLeftAloneAndNothingIsSaid) {
  ShmData before = *shm;
  lockOnce();
  EXPECT_EQ(0, memcmp(&before, shm, sizeof before));
  EXPECT_THAT(syslogLines(), IsEmpty());
}

TEST_F(JournalTest, AFinishedChangeIsNamedInTheSystemLog) {
  leave({Work::kRuleClosing, 0, 0, 4});
  lockOnce();
  EXPECT_EQ(3, shm->filterTable.ruleCount);
  EXPECT_EQ(2, shm->filterTable.rule[0].destPort);
  EXPECT_TRUE(quiet());
  EXPECT_THAT(syslogLines(),
              ElementsAre("warning: A process died while it changed the rule table: the change is finished"));
}

TEST_F(JournalTest, AChangeTakenBackIsNamedInTheSystemLog) {
  shm->config.users[3] = userNamed("delta", 1);
  leave({Work::kUserAdding, 0, 3, 3});
  lockOnce();
  EXPECT_EQ(3, shm->config.userCount);
  EXPECT_EQ('\0', shm->config.users[3].username[0]);
  EXPECT_THAT(syslogLines(),
              ElementsAre("warning: A process died while it changed the user table: the change is taken back"));
}

TEST_F(JournalTest, TheGuardOfAnOperationPutsRightToo) {
  leave({Work::kEventEmptying, 0, 0, 0});
  EXPECT_EQ(0, getEventCount());
  EXPECT_TRUE(quiet());
}

TEST_F(JournalTest, ASecondWordWithoutAFirstIsClearedSilently) {
  leave({Work::kNone, 0, 0, 77});
  ASSERT_FALSE(quiet());
  lockOnce();
  EXPECT_TRUE(quiet());
  EXPECT_THAT(syslogLines(), IsEmpty());
}

TEST_F(JournalTest, WhatNoChangeLeavesIsClearedAndNamed) {
  ShmData before = *shm;
  leave({static_cast<Work>(60), 5, 6, 7});
  lockOnce();
  EXPECT_EQ(0, memcmp(&before, shm, sizeof before));
  EXPECT_THAT(syslogLines(), ElementsAre("warning: The store named a change that cannot be (60, 5, 6, 7): cleared"));
}

// Places and counts beside those of the tables are no licence to shift anything.
TEST_F(JournalTest, NotesThatDoNotFitTheTablesChangeNothing) {
  const Note notes[] = {
      {Work::kRuleClosing, 0, 0, 6},      {Work::kRuleClosing, 26 * 4, 0, 4},
      {Work::kRuleOpening, 26 * 5, 0, 4}, {Work::kRuleOpening, 0, 0, 8192},
      {Work::kRuleMoving, 26 * 3, 0, 4},  {Work::kRuleMoving, 0, 0, twoNumbers(4, 3)},
      {Work::kRuleMovingFull, 0, 0, 0},   {Work::kDefaultRule, 0, 1, 0},
      {Work::kUserClosing, 0, 0, 0},      {Work::kUserClosing, 12 * 5, 3, 1},
      {Work::kUserAdding, 0, 5, 0},       {Work::kUserAdding, 0, 1, 0},
      {Work::kAddressClosing, 0, 0, 0},   {Work::kAddressClosing, 10 * 3, 0, 3},
      {Work::kAddress6Closing, 0, 0, 5},  {Work::kAddress6Changing, 0, 3, 4},
      {Work::kEventChanging, 3, 0, 4},    {Work::kEventCounting, 99, 0, 0},
      {Work::kRouteLinking, 1024, 0, 0},  {Work::kRouteUnlinking, 5000, 0, 0},
      {Work::kRouteSwapping, 1, 0, 1},    {Work::kRoute6Swapping, 1, 0, 1024},
  };
  for (const Note& note : notes) {
    SCOPED_TRACE(static_cast<uint32_t>(note.work));
    ShmData before = *shm;
    leave(note);
    EXPECT_EQ(Outcome::kNonsense, finishWork(*shm));
    EXPECT_EQ(0, memcmp(&before, shm, sizeof before));
  }
}

TEST_F(JournalTest, AnyWordsOnAnyTablesAreOverWithOneLook) {
  std::mt19937 random(1);
  auto store = std::make_unique<ShmData>(*shm);
  for (int round = 0; round < 20000; ++round) {
    if (round % 100 == 0) *store = *shm;
    if (round % 7 == 0) store->filterTable.ruleCount = static_cast<int32_t>(random() % 8200);
    if (round % 11 == 0) store->config.userCount = static_cast<int32_t>(random());
    store->eventLog.eventLogFull = round % 2 == 0;
    Note note = {static_cast<Work>(random() % 24), static_cast<uint32_t>(random() >> random() % 32) & 0x3FFFF,
                 static_cast<uint32_t>(random() >> random() % 32) & 0xFF,
                 static_cast<uint32_t>(random() >> random() % 32)};
    Journal(*store).begin(note);
    static_cast<void>(finishWork(*store));  // nonsense or not: the second time nothing is left
    EXPECT_EQ(Outcome::kNothing, finishWork(*store));
  }
}

// The detached pointer leads nowhere, and the lock can still be had.
TEST_F(JournalTest, ADetachedStoreIsNotLookedAt) {
  leave({Work::kEventEmptying, 0, 0, 0});
  EXPECT_EQ(0, inOtherProcess([] {
              shm_detach();
              return shm_lock();
            }));
}

}  // namespace
}  // namespace kestrove::testing
