// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <string.h>
#include <time.h>

#include <limits>
#include <string>

#include "kestrove/text.h"

namespace {

constexpr time_t kWhen = 1000000000;  // 2001-09-09 01:46:40 UTC

TEST(Times, AreShownInUtc) {
  setenv("TZ", "America/New_York", 1);
  tzset();
  char date[256], clock[256];
  formatTime(date, clock, "%d/%m/%Y", &kWhen);
  EXPECT_STREQ("09/09/2001", date);
  EXPECT_STREQ("01:46:40", clock);
}

TEST(Times, EitherOutputMayBeLeftOut) {
  char date[256] = "kept", clock[256] = "kept";
  formatTime(date, nullptr, "%Y", &kWhen);
  EXPECT_STREQ("2001", date);
  formatTime(nullptr, clock, "%Y", &kWhen);
  EXPECT_STREQ("01:46:40", clock);
  formatTime(nullptr, clock, nullptr, &kWhen);
  EXPECT_STREQ("01:46:40", clock);
}

TEST(Times, NullFormatOrTimeWritesNothing) {
  char date[256] = "kept", clock[256] = "kept";
  formatTime(date, clock, nullptr, &kWhen);
  formatTime(date, clock, "%Y", nullptr);
  EXPECT_STREQ("kept", date);
  EXPECT_STREQ("kept", clock);
}

TEST(Times, TextThatDoesNotFitIsEmpty) {
  char date[256] = "kept";
  formatTime(date, nullptr, std::string(300, 'x').c_str(), &kWhen);
  EXPECT_STREQ("", date);
  formatTime(date, nullptr, std::string(255, 'x').c_str(), &kWhen);
  EXPECT_EQ(std::string(255, 'x'), date);
}

TEST(Times, TimeWithoutCalendarFormWritesNothing) {
  if (sizeof(time_t) < 8) return;  // every 32-bit time has one
  char date[256] = "kept", clock[256] = "kept";
  time_t never = std::numeric_limits<time_t>::max();
  formatTime(date, clock, "%Y", &never);
  EXPECT_STREQ("kept", date);
  EXPECT_STREQ("kept", clock);
}

TEST(Times, SystemTimeIsNow) {
  char date[256];
  setenv("TZ", "UTC", 1);
  tzset();
  time_t before = time(nullptr);
  getSystemTime(date, nullptr, "%s");
  EXPECT_GE(std::stoll(date), static_cast<long long>(before));
  EXPECT_LE(std::stoll(date), static_cast<long long>(time(nullptr)));
}

}  // namespace
