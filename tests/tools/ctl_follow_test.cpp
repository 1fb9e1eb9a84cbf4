// SPDX-License-Identifier: Apache-2.0
// The event log followed at a terminal.
#include <gmock/gmock.h>

#include <sstream>

#include "tests/support/peer.h"
#include "tests/tools/programs.h"
#include "tests/tools/terminal.h"

namespace kestrove::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr int kLogin = 21;

class CtlFollowTest : public StoreTest {
 protected:
  // Events are logged until one is heard: from there on the follower misses none.
  static bool follows(Terminal& terminal) {
    for (int i = 0; i < 100; ++i) {
      logEvent(kLogin, 2, "ready");
      if (terminal.says("ready", 10)) return true;
    }
    return false;
  }
  static int interrupted(Terminal& terminal) {
    terminal.type("\x03");
    return terminal.end();
  }
};

TEST_F(CtlFollowTest, NewEventsComeUntilCtrlC) {
  logEvent(kLogin, 2, "before");
  Terminal terminal({"events", "--follow"});
  ASSERT_TRUE(follows(terminal));
  logEvent(24, 3, "eve");
  EXPECT_TRUE(terminal.says("eve         CLI Login"));
  EXPECT_EQ(0, interrupted(terminal));
  EXPECT_THAT(terminal.heard(), Not(HasSubstr("before")));
}

TEST_F(CtlFollowTest, WithJsonEachLineIsAnObject) {
  Terminal terminal({"--json", "events", "follow"});
  ASSERT_TRUE(follows(terminal));
  EXPECT_EQ(0, interrupted(terminal));
  std::istringstream lines(terminal.heard());
  int objects = 0;
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("{")) continue;
    ++objects;
    const Json event = Json::parse(line, nullptr, false);
    EXPECT_EQ("ready", event["user"]) << line;
    EXPECT_EQ("Web interface login", event["description"]) << line;
  }
  EXPECT_GT(objects, 0);
}

TEST_F(CtlFollowTest, AClearedLogIsSaidAndGoesOn) {
  Terminal terminal({"events", "--follow"});
  ASSERT_TRUE(follows(terminal));
  ASSERT_EQ(0, clearEventLog(3, "sweeper"));
  EXPECT_TRUE(terminal.says("the event log was emptied"));
  EXPECT_TRUE(terminal.says("sweeper     System Event Log Cleared"));
  logEvent(24, 3, "eve");
  EXPECT_TRUE(terminal.says("eve         CLI Login"));
  EXPECT_EQ(0, interrupted(terminal));
}

TEST_F(CtlFollowTest, OnceRoundTheRingNoneIsMissing) {
  for (EventRecord& record : shm->eventLog.record) record = {1000, kLogin, 2, "old"};
  shm->eventLog.writeIndex = SHM_EVENTS - 1;
  Terminal terminal({"events", "--follow"});
  ASSERT_TRUE(follows(terminal));
  for (const char* user : {"first", "second", "third"}) logEvent(24, 3, user);
  for (const char* user : {"first ", "second ", "third "}) EXPECT_TRUE(terminal.says(user)) << user;
  EXPECT_EQ(1u, shm->eventLog.eventLogFull);
  EXPECT_EQ(0, interrupted(terminal));
  EXPECT_THAT(terminal.heard(), Not(HasSubstr("old")));
}

TEST_F(CtlFollowTest, BetweenTheLooksTheLockIsFree) {
  Terminal terminal({"events", "--follow"});
  ASSERT_TRUE(follows(terminal));
  EXPECT_EQ(0, ctl("--wait 0 set wanLinkRate 2048000").status);
  EXPECT_EQ(0, interrupted(terminal));
}

TEST_F(CtlFollowTest, AStoreThatIsBuiltAnewEndsIt) {
  Terminal terminal({"events", "--follow"});
  ASSERT_TRUE(follows(terminal));
  ASSERT_EQ(0, delete_shared_memory());
  EXPECT_EQ(3, terminal.end());
  EXPECT_THAT(terminal.heard(), HasSubstr("the store is gone or was built anew"));
  dropStore();
  makeStore();
}

TEST_F(CtlFollowTest, ATimeGoesWithFollowingAlone) {
  EXPECT_EQ(2, ctl("events --seconds 1").status);
  EXPECT_EQ(0, ctl("events list --follow --seconds 1").status);
}

}  // namespace
}  // namespace kestrove::testing
