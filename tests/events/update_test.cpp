// SPDX-License-Identifier: Apache-2.0
// The fresh log of a system update and its copy for the new system.
#include <sys/stat.h>

#include "tests/support/files.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

constexpr char kCopy[] = "/old_dir/var/log/kestrove/event.log";

class EventUpdate : public StoreTest {};

TEST_F(EventUpdate, StartsAFreshLogAndCopiesIt) {
  for (int i = 0; i < 5; ++i) ASSERT_EQ(0, logEvent(24, 3, "x"));
  clearRecords();
  EXPECT_EQ(0, logSystemUpdateEvent(4, 2, "admin"));
  EXPECT_EQ(2, getEventCount());
  EXPECT_EQ(4u, shm->eventLog.record[0].eventId);
  EXPECT_EQ(3u, shm->eventLog.record[1].eventId);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(2u, shm->eventLog.record[i].source);
    EXPECT_STREQ("admin", shm->eventLog.record[i].userName);
  }
  EXPECT_EQ(std::vector<std::string>{"cp -a /var/log/kestrove/event.log /old_dir/var/log/kestrove/"}, programs());
  EXPECT_EQ(360460u, readFile(kEventFile).size());
  EXPECT_TRUE(readFile(kEventFile) == readFile(kCopy));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(EventUpdate, NameInTheLogItselfIsTheOneOfBothEvents) {
  ASSERT_EQ(0, logEvent(24, 3, "administrator"));
  EXPECT_EQ(0, logSystemUpdateEvent(4, 2, shm->eventLog.record[0].userName + 3));
  for (int i = 0; i < 2; ++i) EXPECT_STREQ("inistrator", shm->eventLog.record[i].userName);
}

TEST_F(EventUpdate, GoesOnWithoutTheStore) {
  dropStore();
  clearRecords();
  answer("cp", "", 3);
  EXPECT_EQ(3, logSystemUpdateEvent(4, 2, "admin"));
  EXPECT_EQ(1u, programs().size());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(EventUpdate, GivesTheCopysStatus) {
  answer("cp", "", 3);
  EXPECT_EQ(3, logSystemUpdateEvent(5, 2, "admin"));
}

TEST_F(EventUpdate, CopiesEvenWithLoggingOff) {
  shm->config.loggingOperState = SHM_OFF;
  clearRecords();
  EXPECT_EQ(0, logSystemUpdateEvent(4, 2, "admin"));
  EXPECT_EQ(0, getEventCount());
  EXPECT_EQ(1u, programs().size());
}

}  // namespace
}  // namespace kestrove::testing
