// SPDX-License-Identifier: Apache-2.0
// The listing of the whole log.
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "kestrove/dump.h"
#include "tests/support/memory_stream.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

std::string listing() { return printed(printEventLog); }

// An event of the given second of 14 March 2011, 09:15.
void put(uint32_t slot, int second, uint32_t id, uint32_t source, const char* user) {
  EventRecord& record = shm->eventLog.record[slot];
  record = {1300094100 + second, id, source, {}};
  memcpy(record.userName, user, std::min(strlen(user), sizeof record.userName));
}

class EventList : public StoreTest {};

TEST_F(EventList, Empty) {
  EXPECT_EQ(
      "  eventLogFull: \t\t0\n"
      "  readIndex: \t\t\t0\n"
      "  writeIndex: \t\t\t0\n"
      "  ** No events **\n",
      listing());
}

TEST_F(EventList, OldestFirst) {
  put(0, 1, 2, 0, "--");
  put(1, 2, 22, 2, "mallory");
  put(2, 3, 77, 9, "");
  shm->eventLog.writeIndex = 3;
  EXPECT_EQ(
      "  eventLogFull: \t\t0\n"
      "  readIndex: \t\t\t0\n"
      "  writeIndex: \t\t\t3\n"
      "- List of events:\n"
      "Timestamp             Description  Source    Type\n"
      "---------             -----------  ------    ----\n"
      "14-Mar-2011 09:15:01  Information  System    --          System Started\n"
      "14-Mar-2011 09:15:02  Warning      HTTP      mallory     Web interface login failed\n"
      "14-Mar-2011 09:15:03  ---          (null)                Unknown event\n"
      "-----------------\n",
      listing());
}

TEST_F(EventList, AFullRingStartsAtItsReader) {
  for (uint32_t slot = 0; slot < SHM_EVENTS; ++slot) put(slot, 0, 24, 3, std::to_string(slot).c_str());
  shm->eventLog.eventLogFull = 1;
  shm->eventLog.readIndex = shm->eventLog.writeIndex = 100;
  const std::string text = listing();
  size_t first = text.find("Serial    100 "), last = text.find("Serial    99 ");
  ASSERT_NE(text.npos, first);
  ASSERT_NE(text.npos, last);
  EXPECT_LT(first, last);
  EXPECT_EQ(SHM_EVENTS, static_cast<int>(std::count(text.begin(), text.end(), '\n')) - 7);
}

TEST_F(EventList, AFullRingWhoseWriterIsAtTheStartIsNotEmpty) {
  shm->eventLog.eventLogFull = 1;
  EXPECT_NE(std::string::npos, listing().find("- List of events:"));
}

TEST_F(EventList, DamagedIndexesAreShownAsTheyAreAndEndTheList) {
  shm->eventLog.writeIndex = UINT32_MAX;
  shm->eventLog.readIndex = 9000;
  const std::string text = listing();
  EXPECT_NE(text.npos, text.find("  readIndex: \t\t\t9000\n  writeIndex: \t\t\t-1\n"));
  EXPECT_EQ(SHM_EVENTS, static_cast<int>(std::count(text.begin(), text.end(), '\n')) - 7);
}

TEST_F(EventList, TheLongestLineIsShownWhole) {
  put(0, 1, 40, 1, "abcdefghijklmnopqrstuvwxyz012345");
  shm->eventLog.writeIndex = 1;
  EXPECT_NE(std::string::npos, listing().find("Kestrove  abcdefghijklmnopqrstuvwxyz012345  System Restored to Saved "
                                              "State\n"));
}

TEST_F(EventList, GoesToStandardOutputWithoutAStream) {
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(0, printEventLog(nullptr));
  fflush(stdout);
  EXPECT_EQ(listing(), ::testing::internal::GetCapturedStdout());
}

TEST_F(EventList, LeavesTheCallersLockCounted) {
  put(0, 1, 2, 0, "--");
  shm->eventLog.writeIndex = 1;
  ASSERT_EQ(0, shm_lock());
  listing();
  EXPECT_EQ(1, shm_lock_count);
  shm_unlock();
}

TEST_F(EventList, AttachesByItself) {
  ShmData* mapped = shm;
  shm = nullptr;
  EXPECT_NE(std::string::npos, listing().find("** No events **"));
  EXPECT_NE(nullptr, shm);
  shm = mapped;
}

TEST_F(EventList, WithoutStoreFails) {
  dropStore();
  EXPECT_FAILS_WITH(SHM_EATTACH, printEventLog(stdout));
}

}  // namespace
}  // namespace kestrove::testing
