// SPDX-License-Identifier: Apache-2.0
// kestrovectl shell --login, as a serial console runs it.
#include <gmock/gmock.h>

#include "tests/tools/programs.h"
#include "tests/tools/terminal.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class LoginTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    setenv("KESTROVE_HOME", "/tmp/shell", 1);
    setenv("TERM", "dumb", 1);
    setenv("PAGER", "/bin/sh", 1);
    setShmString(SHM_TEXT_SYS_NAME, "branch-7");
    shm->config.cliOperState = SHM_ON;
    shm->config.bannerOperState = SHM_OFF;
    ASSERT_EQ(0, ctl("user add alice --admin", "Passw0rd!\n").status);
    ASSERT_EQ(0, ctl("user add guest", "Visit0rs!\n").status);
    shm->eventLog.writeIndex = 0;
  }
  static std::vector<const char*> console() { return {"shell", "--login", "--delay", "0.01"}; }

  static void enter(Terminal& terminal, const std::string& name, const std::string& password) {
    ASSERT_TRUE(terminal.says("login: "));
    terminal.type(name + "\n");
    ASSERT_TRUE(terminal.says("Password: "));
    ASSERT_TRUE(terminal.becomes(false));
    terminal.type(password + "\n");
  }
  static bool answers(Terminal& terminal, const std::string& keys, const std::string& text) {
    terminal.type(keys);
    return terminal.says(text) && terminal.says("branch-7");
  }
  // "25 3 alice" of each.
  static std::vector<std::string> events() {
    std::vector<std::string> found;
    for (uint32_t i = 0; i < shm->eventLog.writeIndex; ++i) {
      const EventRecord& event = shm->eventLog.record[i];
      found.push_back(std::to_string(event.eventId) + " " + std::to_string(event.source) + " " + event.userName);
    }
    return found;
  }
};

TEST_F(LoginTest, WrongThriceThenRightIsLoggedAndStamped) {
  Terminal terminal(console());
  enter(terminal, "alice", "Passw0rd?");
  ASSERT_TRUE(terminal.says("Log-in failed."));
  enter(terminal, "alice", "");
  ASSERT_TRUE(terminal.says("Log-in failed.")) << "the library takes an empty one for a question";
  enter(terminal, "alic", "Passw0rd!");
  ASSERT_TRUE(terminal.says("Log-in failed.")) << "nor is the beginning of a name one";
  EXPECT_EQ(0, shm->config.users[0].lastLoginSeconds);
  enter(terminal, "alice", "Passw0rd!");
  ASSERT_TRUE(terminal.says("branch-7> "));
  EXPECT_THAT(events(), ElementsAre("25 3 alice", "25 3 alice", "25 3 --", "24 3 alice"));
  EXPECT_NE(0, shm->config.users[0].lastLoginSeconds);
  EXPECT_EQ(uint32_t{SHM_LOGIN_SERIAL}, shm->loginFrom);
  EXPECT_THAT(terminal.heard(), Not(HasSubstr("Passw0rd")));
}

TEST_F(LoginTest, ChangesCarryTheUserAndTheSerialPort) {
  Terminal terminal(console());
  enter(terminal, "alice", "Passw0rd!");
  ASSERT_TRUE(terminal.says("branch-7> "));
  EXPECT_TRUE(answers(terminal, "set compression off\r", "off"));
  EXPECT_THAT(events(), ElementsAre("24 3 alice", "10 3 alice"));
  EXPECT_TRUE(answers(terminal, "--user bob set compression on\r", "no such option")) << "nobody acts for another";
  EXPECT_TRUE(answers(terminal, "--source 4 set compression on\r", "no such option"));
  EXPECT_EQ(SHM_OFF, shm->config.compression);
  terminal.type("exit\r");
  EXPECT_EQ(0, terminal.end());
  EXPECT_EQ("set compression off\n", readFile("/tmp/shell/shell-history-alice").substr(0, 20));
}

TEST_F(LoginTest, WithoutTheSuperUserSwitchOneMayOnlyRead) {
  Terminal terminal(console());
  enter(terminal, "guest", "Visit0rs!");
  ASSERT_TRUE(terminal.says("branch-7$ "));
  const char* refused = "guest may only read: the account has no super-user switch";
  EXPECT_TRUE(answers(terminal, "set compression off\r", refused));
  EXPECT_TRUE(answers(terminal, "user passwd alice\r", refused));
  EXPECT_TRUE(answers(terminal, "user check alice\r", refused));
  EXPECT_TRUE(answers(terminal, "load /etc/passwd\r", refused));
  EXPECT_TRUE(answers(terminal, "explain load /etc/passwd\r", refused));
  EXPECT_TRUE(answers(terminal, "show minRate\r", "minRate"));
  shm->config.users[1].superUser = 1;
  terminal.type("\r");
  EXPECT_TRUE(terminal.says("branch-7*> ")) << "at once, also while one is here";
}

TEST_F(LoginTest, ConfigurationThroughTheSerialPortMayBeOff) {
  shm->config.cliOperState = SHM_OFF;
  Terminal terminal(console());
  enter(terminal, "alice", "Passw0rd!");
  ASSERT_TRUE(terminal.says("branch-7$ "));
  EXPECT_TRUE(answers(terminal, "set cliOperState on\r", "configuration through the serial port is off"));
  EXPECT_EQ(SHM_OFF, shm->config.cliOperState);
  EXPECT_TRUE(answers(terminal, "show minRate\r", "minRate"));
}

TEST_F(LoginTest, WhoIsRemovedIsSentAway) {
  Terminal terminal(console());
  enter(terminal, "guest", "Visit0rs!");
  ASSERT_TRUE(terminal.says("branch-7$ "));
  ASSERT_EQ(1, removeUser("guest"));
  terminal.type("show minRate\r");
  EXPECT_TRUE(terminal.says("the account guest is gone"));
  EXPECT_EQ(0, terminal.end());
  EXPECT_THAT(terminal.heard(), Not(HasSubstr("accepts"))) << "before anything is shown";
}

TEST_F(LoginTest, NoKeyLeadsToTheMachine) {
  setenv("TERM", "vt100", 1);
  setenv("NO_COLOR", "1", 1);
  Terminal terminal(console());
  ASSERT_TRUE(terminal.says("login: "));
  terminal.type("\x03\x1a\x1c\n");
  enter(terminal, "alice", "Passw0rd!");
  ASSERT_TRUE(terminal.says("branch-7> "));
  terminal.type("\x1a\x1c\x1bxbind\r");
  EXPECT_TRUE(answers(terminal, "\x15!sh\r", "no such command"));
  terminal.type("show\r");
  EXPECT_TRUE(terminal.says("wanLinkRate")) << "whatever PAGER was";
  terminal.type("!");
  EXPECT_TRUE(terminal.says("not available"));
  terminal.type("\rq");
  EXPECT_TRUE(terminal.says("branch-7> "));
  for (int number : {SIGINT, SIGQUIT, SIGTSTP}) terminal.signal(number);
  EXPECT_TRUE(answers(terminal, "q\x15show minRate\r", "accepts"));
  terminal.type("exit\r");
  EXPECT_EQ(0, terminal.end()) << terminal.heard();
}

TEST_F(LoginTest, TheBannerIsASwitch) {
  {
    Terminal terminal(console());
    ASSERT_TRUE(terminal.says("login: "));
    EXPECT_THAT(terminal.heard(), Not(HasSubstr("branch-7")));
    EXPECT_EQ(0, terminal.leave("\x04")) << "the end of input before anybody came";
  }
  shm->config.bannerOperState = SHM_ON;
  Terminal terminal(console());
  ASSERT_TRUE(terminal.says("login: "));
  EXPECT_THAT(terminal.heard(), HasSubstr("branch-7"));
  EXPECT_THAT(terminal.heard(), HasSubstr("For authorised users only."));
}

TEST_F(LoginTest, ItNeedsATerminal) {
  const Ran ran = ctl("shell --login", "alice\nPassw0rd!\nshow\n");
  EXPECT_EQ(2, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("a log-in needs a terminal"));
}

}  // namespace
}  // namespace kestrove::testing
