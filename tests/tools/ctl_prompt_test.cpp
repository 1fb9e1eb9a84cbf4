// SPDX-License-Identifier: Apache-2.0
// Passwords that are typed: at a terminal, as a user sees it.
#include <gmock/gmock.h>

#include "tests/tools/programs.h"
#include "tests/tools/terminal.h"

namespace kestrove::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class CtlPromptTest : public StoreTest {};

TEST_F(CtlPromptTest, ANewPasswordIsAskedTwiceAndNeverShown) {
  Terminal terminal({"user", "add", "alice"});
  ASSERT_TRUE(terminal.says("Password: "));
  terminal.type("Passw0rd!\n");
  ASSERT_TRUE(terminal.says("Password again: "));
  terminal.type("Passw0rd!\n");
  EXPECT_EQ(0, terminal.end());
  EXPECT_THAT(terminal.heard(), HasSubstr("user alice added"));
  EXPECT_THAT(terminal.heard(), Not(HasSubstr("Passw0rd")));
  EXPECT_EQ(0, ctl("user check alice", "Passw0rd!\n").status);
}

TEST_F(CtlPromptTest, TwoDifferentPasswordsChangeNothing) {
  Terminal terminal({"user", "add", "alice"});
  ASSERT_TRUE(terminal.says("Password: "));
  terminal.type("Passw0rd!\n");
  ASSERT_TRUE(terminal.says("Password again: "));
  terminal.type("Passw0rd?\n");
  EXPECT_EQ(2, terminal.end());
  EXPECT_THAT(terminal.heard(), HasSubstr("the two passwords differ; nothing is changed"));
  EXPECT_EQ(0, shm->config.userCount);
}

TEST_F(CtlPromptTest, AChangeAsksForTheOldOneOnceAndTheNewOneTwice) {
  ASSERT_EQ(0, ctl("user add alice", "Passw0rd!\n").status);
  Terminal terminal({"user", "passwd", "alice"});
  ASSERT_TRUE(terminal.says("Old password: "));
  terminal.type("Passw0rd!\n");
  ASSERT_TRUE(terminal.says("New password: "));
  terminal.type("Xyzuvw9#k\n");
  ASSERT_TRUE(terminal.says("New password again: "));
  terminal.type("Xyzuvw9#k\n");
  EXPECT_EQ(0, terminal.end());
  EXPECT_EQ(0, ctl("user check alice", "Xyzuvw9#k\n").status);
}

TEST_F(CtlPromptTest, ASignalPutsTheEchoBack) {
  for (int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    Terminal asking({"user", "add", "alice"});
    ASSERT_TRUE(asking.says("Password: "));
    ASSERT_TRUE(asking.becomes(false));
    asking.signal(number);
    EXPECT_EQ(128 + number, asking.end());
    EXPECT_TRUE(asking.echoes()) << number;
  }
  EXPECT_EQ(0, shm->config.userCount);
}

TEST_F(CtlPromptTest, TheKeyForAnInterruptDoesToo) {
  Terminal terminal({"user", "add", "alice"});
  ASSERT_TRUE(terminal.says("Password: "));
  ASSERT_TRUE(terminal.becomes(false));
  terminal.type("Pass\x03");
  EXPECT_EQ(128 + SIGINT, terminal.end());
  EXPECT_TRUE(terminal.echoes());
}

TEST_F(CtlPromptTest, AStopPutsTheEchoBackUntilItGoesOn) {
  Terminal terminal({"user", "add", "alice"}, false);
  ASSERT_TRUE(terminal.says("Password: "));
  ASSERT_TRUE(terminal.becomes(false));
  terminal.signal(SIGTSTP);
  ASSERT_TRUE(terminal.stopped());
  EXPECT_TRUE(terminal.echoes());
  terminal.signal(SIGCONT);
  ASSERT_TRUE(terminal.says("Password: "));
  ASSERT_TRUE(terminal.becomes(false));
  terminal.type("Passw0rd!\n");
  ASSERT_TRUE(terminal.says("Password again: "));
  terminal.type("Passw0rd!\n");
  EXPECT_EQ(0, terminal.end());
}

TEST_F(CtlPromptTest, NobodyWaitsForTheStoreMeanwhile) {
  Terminal terminal({"user", "add", "alice"});
  ASSERT_TRUE(terminal.says("Password: "));
  EXPECT_EQ(0, ctl("--wait 0 set wanLinkRate 2048000").status);
}

}  // namespace
}  // namespace kestrove::testing
