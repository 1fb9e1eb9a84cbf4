// SPDX-License-Identifier: Apache-2.0
// Events when the clock cannot be read. This program's own time() stands in for the C library's.
#include <time.h>

#include "tests/support/files.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace {
time_t clockShows = 0;
}

extern "C" __attribute__((visibility("default"))) time_t time(time_t* out) noexcept {
  if (out) *out = clockShows;
  return clockShows;
}

namespace kestrove::testing {
namespace {

class EventClock : public StoreTest {};

TEST_F(EventClock, UnreadableIsToldToSyslogAndNothingIsRecorded) {
  clockShows = -1;
  clearSyslog();
  EXPECT_FAILS_WITH(SHM_ESYSTEM, logEvent(2, 0, "--"));
  EXPECT_EQ(std::vector<std::string>{"info: Event logged: Information, System, System Started"}, syslogLines());
  EXPECT_EQ(0, getEventCount());
  EXPECT_EQ(0u, shm->eventLog.record[0].eventId);
  EXPECT_FALSE(fileExists(kEventFile));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(EventClock, SecondsAreStoredAsTheyAre) {
  clockShows = 1300094102;
  EXPECT_EQ(0, logEvent(21, 2, "admin"));
  EXPECT_EQ(1300094102, shm->eventLog.record[0].timestamp);
  char line[128];
  EXPECT_EQ(62, getEventString(0, line, sizeof line, 2));
  EXPECT_STREQ("14-03-2011,09:15:02,Information,HTTP,admin,Web interface login", line);
}

}  // namespace
}  // namespace kestrove::testing
