// SPDX-License-Identifier: Apache-2.0
// One record as text: layouts, cuts, borders.
#include "events/format.h"

#include <stdio.h>
#include <time.h>

#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

constexpr int32_t kMarch = 1300094102;  // 14 March 2011, 09:15:02

EventRecord record(const char* user = "admin", uint32_t id = 21, uint32_t source = 2, int32_t when = kMarch) {
  EventRecord made = {when, id, source, {}};
  memcpy(made.userName, user, std::min(strlen(user), sizeof made.userName));
  return made;
}

std::string line(const EventRecord& event, int layout) {
  char text[256];
  int length = formatEventRecord(event, text, sizeof text, layout);
  EXPECT_EQ(static_cast<size_t>(length), strlen(text));
  return text;
}

TEST(EventFormat, List) {
  EXPECT_EQ("14-Mar-2011 09:15:02  Information  HTTP      admin       Web interface login", line(record(), 1));
}

TEST(EventFormat, Comma) {
  EXPECT_EQ("14-03-2011,09:15:02,Information,HTTP,admin,Web interface login", line(record(), 2));
}

TEST(EventFormat, NarrowCutsTypeAndUser) {
  EXPECT_EQ("14-Mar-2011 09:15:02  Info  HTTP      administ  Web interface login", line(record("administrator"), 3));
  EXPECT_EQ("14-Mar-2011 09:15:02  ---   System    --        Unknown event", line(record("--", 0, 0), 3));
}

TEST(EventFormat, EveryOtherLayoutIsTheList) {
  for (int layout : {0, 4, -1, INT32_MAX, INT32_MIN}) EXPECT_EQ(line(record(), 1), line(record(), layout)) << layout;
}

TEST(EventFormat, WideColumnsAreNotCutInTheList) {
  EXPECT_EQ("14-Mar-2011 09:15:02  Information  Kestrove  administrator  System Restored to Saved State",
            line(record("administrator", 40, 1), 1));
}

TEST(EventFormat, EmptyUserLeavesItsColumn) {
  EXPECT_EQ("14-Mar-2011 09:15:02  Warning      SSH                   CLI Login failed", line(record("", 25, 4), 1));
  EXPECT_EQ("14-03-2011,09:15:02,Warning,SSH,,CLI Login failed", line(record("", 25, 4), 2));
}

TEST(EventFormat, AUserOfThirtyTwoCharactersEndsThere) {
  EventRecord full[2] = {record("abcdefghijklmnopqrstuvwxyz012345"), record()};
  EXPECT_EQ("14-03-2011,09:15:02,Information,HTTP,abcdefghijklmnopqrstuvwxyz012345,Web interface login",
            line(full[0], 2));
}

TEST(EventFormat, BogusIdsAreUnknownEvents) {
  EXPECT_EQ("14-03-2011,09:15:02,---,HTTP,admin,Unknown event", line(record("admin", 49), 2));
  EXPECT_EQ("14-03-2011,09:15:02,---,HTTP,admin,Unknown event", line(record("admin", UINT32_MAX), 2));
}

TEST(EventFormat, SourcesWithoutNamePrintAsNull) {
  for (uint32_t source : {9u, 11u, 12u, UINT32_MAX}) {
    EXPECT_EQ("14-Mar-2011 09:15:02  Information  (null)    admin       Web interface login",
              line(record("admin", 21, source), 1));
  }
}

TEST(EventFormat, DaysBelowTenArePaddedWithABlank) {
  EXPECT_EQ(" 1-Jan-1970 00:00:00", line(record("", 0, 0, 0), 1).substr(0, 20));
  EXPECT_EQ(" 1-01-1970,00:00:00", line(record("", 0, 0, 0), 2).substr(0, 19));
}

TEST(EventFormat, TimesAreSignedSecondsInUtc) {
  setenv("TZ", "America/New_York", 1);
  tzset();
  EXPECT_EQ("31-Dec-1969 23:59:59", line(record("", 0, 0, -1), 1).substr(0, 20));
  EXPECT_EQ("19-Jan-2038 03:14:07", line(record("", 0, 0, INT32_MAX), 1).substr(0, 20));
  EXPECT_EQ("13-Dec-1901 20:45:52", line(record("", 0, 0, INT32_MIN), 1).substr(0, 20));
}

// The C library's own formatter is the judge.
TEST(EventFormat, EveryMonthReadsAsTheLibraryWritesIt) {
  for (int64_t step = 0; step < 4000; ++step) {
    auto when = static_cast<int32_t>(INT32_MIN + step * 1073707);
    time_t seconds = when;
    struct tm parts;
    ASSERT_TRUE(gmtime_r(&seconds, &parts));
    char named[32], numbered[32];
    strftime(named, sizeof named, "%e-%b-%Y %T", &parts);
    strftime(numbered, sizeof numbered, "%e-%m-%Y,%T", &parts);
    EXPECT_EQ(named, line(record("", 0, 0, when), 1).substr(0, 20));
    EXPECT_EQ(numbered, line(record("", 0, 0, when), 2).substr(0, 19));
  }
}

TEST(EventFormat, EverySizeCutsAndTerminates) {
  const std::string whole = line(record(), 1);
  for (int size = 1; size <= static_cast<int>(whole.size()) + 3; ++size) {
    std::string text(whole.size() + 8, '#');
    int expected = std::min(size - 1, static_cast<int>(whole.size()));
    EXPECT_EQ(expected, formatEventRecord(record(), text.data(), size, 1));
    EXPECT_EQ(whole.substr(0, static_cast<size_t>(expected)), text.c_str());
    EXPECT_EQ('#', text[static_cast<size_t>(expected) + 1]) << "written behind the terminator";
  }
}

TEST(EventFormat, SizeZeroWritesNothing) {
  char text[] = "kept";
  EXPECT_EQ(0, formatEventRecord(record(), text, 0, 1));
  EXPECT_STREQ("kept", text);
  EXPECT_EQ(0, formatEventRecord(record(), nullptr, 0, 1));
}

TEST(EventFormat, NegativeSizesAreRefused) {
  char text[] = "kept";
  EXPECT_FAILS_WITH(SHM_EINVAL, formatEventRecord(record(), text, -1, 1));
  EXPECT_FAILS_WITH(SHM_EINVAL, formatEventRecord(record(), text, INT32_MIN, 1));
  EXPECT_STREQ("kept", text);
}

TEST(EventFormat, NoBufferIsRefused) { EXPECT_FAILS_WITH(SHM_EINVAL, formatEventRecord(record(), nullptr, 128, 1)); }

}  // namespace
}  // namespace kestrove::testing
