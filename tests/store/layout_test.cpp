// SPDX-License-Identifier: Apache-2.0
#include "kestrove/layout.h"

#include <gtest/gtest.h>
#include <stddef.h>

#include <set>
#include <string>

#include "kestrove/library.h"
#include "store/layout_table.h"

using namespace kestrove;

namespace {

TEST(Layout, HashIsTheSameInEveryBuild) { EXPECT_EQ(0x58a2cb6260745e64u, kestrove_layout_hash()); }

TEST(Layout, VersionIsThatOfTheBuild) { EXPECT_STREQ(KESTROVE_EXPECTED_VERSION, kestrove_version()); }

TEST(Layout, MembersFollowEachOtherWithoutGaps) {
  uint32_t end = 0;
  uint32_t bytes = 0;
  for (const LayoutRow& row : layoutRows()) {
    if (!row.member) {
      EXPECT_EQ(bytes, end) << "before " << row.record;
      bytes = row.bytes;
      end = 0;
      continue;
    }
    EXPECT_EQ(end, row.offset) << row.record << '.' << row.member;
    end = row.offset + row.bytes;
  }
  EXPECT_EQ(bytes, end);
}

TEST(Layout, NoMemberIsListedTwice) {
  std::set<std::string> names;
  for (const LayoutRow& row : layoutRows()) {
    EXPECT_TRUE(names.insert(std::string(row.record) + '.' + (row.member ? row.member : "")).second) << row.record;
  }
}

struct Landmark {
  const char* what;
  size_t expected;
  size_t actual;
};

// Where separately built programs look for the tables.
TEST(Layout, LandmarksStand) {
  for (const Landmark& mark : {Landmark{"config", 4, offsetof(ShmData, config)},
                               {"config's bytes", 3448, sizeof(ConfigRecord)},
                               {"IPv6 addresses", 3452, offsetof(ShmData, ip6Address)},
                               {"management addresses", 3584, offsetof(ShmData, managementAddress)},
                               {"IPv4 list head", 3868, offsetof(ShmData, routes.head)},
                               {"IPv6 list head", 28452, offsetof(ShmData, routes6.head6)},
                               {"filterTable", 93992, offsetof(ShmData, filterTable)},
                               {"QoS rows", 945964, offsetof(ShmData, qos)},
                               {"event log", 946404, offsetof(ShmData, eventLog)},
                               {"event log's bytes", 360460, sizeof(EventLog)},
                               {"notificationStatus", 1306868, offsetof(ShmData, notificationStatus)},
                               {"statistics", 1306872, offsetof(ShmData, statistics)},
                               {"statistics' bytes", 1152, sizeof(StatisticsBlock)},
                               {"interface rows", 1052, offsetof(StatisticsBlock, interfaceRow)},
                               {"taskPids", 1308024, offsetof(ShmData, taskPids)},
                               {"everything", 1308576, sizeof(ShmData)}}) {
    EXPECT_EQ(mark.expected, mark.actual) << mark.what;
  }
}

TEST(Layout, EntriesHaveTheirSizes) {
  EXPECT_EQ(48u, sizeof(UserAccount));
  EXPECT_EQ(20u, sizeof(Ip6Address));
  EXPECT_EQ(40u, sizeof(ManagementAddress));
  EXPECT_EQ(24u, sizeof(RouteEntry));
  EXPECT_EQ(64u, sizeof(Route6Entry));
  EXPECT_EQ(104u, sizeof(FilterRule));
  EXPECT_EQ(44u, sizeof(QosRow));
  EXPECT_EQ(44u, sizeof(EventRecord));
}

}  // namespace
