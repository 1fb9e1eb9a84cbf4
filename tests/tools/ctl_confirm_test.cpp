// SPDX-License-Identifier: Apache-2.0
// --confirm and confirm: a change that nobody confirms goes back by itself, whatever has died meanwhile.
#include <gmock/gmock.h>
#include <pty.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/syslog.h"
#include "tests/tools/programs.h"
#include "tests/tools/terminal.h"
#include "tools/ctl/history/journal.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kJournal[] = "/var/lib/kestrove/journal";
constexpr uint32_t kBefore = 2048000;
constexpr uint32_t kAfter = 3072000;

// A terminal that belongs to somebody else, as behind su.
class OthersTerminal {
 public:
  explicit OthersTerminal(uid_t owner) {
    char path[64];
    if (openpty(&side_, &other_, path, nullptr, nullptr) != 0) abort();
    EXPECT_EQ(0, fchown(other_, owner, 0));
    path_ = path;
  }
  ~OthersTerminal() {
    close(side_);
    close(other_);
  }
  Ran ctl(const std::string& arguments) const {
    return run("sh -c '" + std::string(KESTROVECTL) + " " + arguments + " <" + path_ + "'");
  }

 private:
  int side_ = -1;
  int other_ = -1;
  std::string path_;
};

class CtlConfirmTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    ASSERT_EQ(0, ctl("set wanLinkRate " + std::to_string(kBefore)).status);
  }
  static Ran change(const std::string& minutes) {
    return ctl("set wanLinkRate " + std::to_string(kAfter) + " --confirm " + minutes);
  }
  static void awaitBefore() {
    for (int i = 0; i < 3000 && (shm->config.wanLinkRate != kBefore || fileExists(kJournal)); ++i) usleep(10000);
    EXPECT_EQ(kBefore, shm->config.wanLinkRate);
    EXPECT_FALSE(fileExists(kJournal));
  }
  static void killWatcher() {
    run("for p in /proc/[0-9]*; do case $(tr '\\0' ' ' <$p/cmdline) in 'kestrovectl confirm-watch'*) "
        "kill -9 ${p#/proc/} ;; esac; done");
  }
  // Another start of the machine, as far as the kernel says.
  static void pretendRestart() {
    writeFile("/tmp/boot", "11111111-2222-3333-4444-555555555555\n");
    ASSERT_EQ(0, mount("/tmp/boot", "/proc/sys/kernel/random/boot_id", nullptr, MS_BIND, nullptr));
  }
  static void expectTakenBack() {
    EXPECT_EQ(kBefore, shm->config.wanLinkRate);
    EXPECT_FALSE(fileExists(kJournal));
    Json newest = ctl("--json history 1").json()[0];
    EXPECT_EQ("not confirmed, taken back", newest["comment"]);
    EXPECT_THAT(readFile("/etc/config/kestrove.conf"), HasSubstr(std::to_string(kBefore)));
  }
};

TEST_F(CtlConfirmTest, ConfirmedInTimeItStays) {
  Ran ran = change("5");
  EXPECT_EQ(0, ran.status);
  EXPECT_THAT(ran.out, HasSubstr("to be confirmed within 5 minutes (kestrovectl confirm)"));
  Json status = ctl("--json confirm --status").json();
  EXPECT_EQ(true, status["pending"]);
  EXPECT_EQ(3, status["revision"]);
  EXPECT_EQ("set wanLinkRate 3072000", status["command"]);
  EXPECT_LT(200, status["secondsLeft"]);
  EXPECT_EQ(0, ctl("confirm").status);
  EXPECT_EQ(false, ctl("--json confirm --status").json()["pending"]);
  EXPECT_EQ(kAfter, shm->config.wanLinkRate);
  EXPECT_EQ(1, ctl("confirm").status) << "nothing waits any more";
}

TEST_F(CtlConfirmTest, UnconfirmedItGoesBackByItself) {
  ASSERT_EQ(0, change("0.01").status);
  awaitBefore();
  expectTakenBack();
  EXPECT_THAT(syslogLines(), Contains(HasSubstr("was not confirmed: the settings before it are back")));
}

TEST_F(CtlConfirmTest, WhoeverWaitsForTheOutcomeIsToldIt) {
  ASSERT_EQ(0, change("0.02").status);
  Ran ran = ctl("confirm --outcome");
  EXPECT_EQ(10, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("was taken back"));
  expectTakenBack();
}

TEST_F(CtlConfirmTest, AHangUpOfTheSessionChangesNothingAboutIt) {
  {
    Terminal terminal({"set", "wanLinkRate", "3072000", "--confirm", "0.02"});
    EXPECT_TRUE(terminal.says("to be confirmed"));
  }  // the terminal goes
  awaitBefore();
  expectTakenBack();
}

TEST_F(CtlConfirmTest, WithoutItsWatcherTheNextCommandTakesItBack) {
  ASSERT_EQ(0, change("0.01").status);
  killWatcher();
  for (int i = 0; i < 1000 && ctl("--json confirm --status").json().value("secondsLeft", 0.0) > 0; ++i) usleep(10000);
  Ran ran = ctl("show wanLinkRate");
  EXPECT_EQ(0, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("was not confirmed: the settings before it are back"));
  EXPECT_THAT(ran.out, HasSubstr(std::to_string(kBefore)));
  expectTakenBack();
}

TEST_F(CtlConfirmTest, ARestartOfTheMachineCountsAsUnconfirmed) {
  ASSERT_EQ(0, change("60").status);
  killWatcher();
  pretendRestart();
  Ran ran = ctl("confirm");
  EXPECT_EQ(10, ran.status) << ran.err;
  expectTakenBack();
}

TEST_F(CtlConfirmTest, ShmInitTakesItBackBeforeAnybodyFindsTheStore) {
  ASSERT_EQ(0, change("60").status);
  ASSERT_THAT(readFile("/etc/config/kestrove.conf"), HasSubstr(std::to_string(kAfter)));
  killWatcher();
  Ran ran = run("shm-init --replace");
  EXPECT_THAT(ran.err, HasSubstr("was not confirmed: the settings before it are back"));
  EXPECT_FALSE(fileExists(kJournal));
  EXPECT_EQ(kBefore, ctl("--json show wanLinkRate").json()[0]["value"]);
  EXPECT_THAT(readFile("/etc/config/kestrove.conf"), HasSubstr(std::to_string(kBefore)));
}

TEST_F(CtlConfirmTest, ASecondOneIsToldWhoseTheFirstIs) {
  ASSERT_EQ(0, change("60").status);
  Ran second = ctl("set lanLinkRate 64000 --confirm 5");
  EXPECT_EQ(1, second.status);
  EXPECT_THAT(second.err, AllOf(HasSubstr("'set wanLinkRate 3072000' of "), HasSubstr("one at a time")));
  EXPECT_EQ(0u, shm->config.lanLinkRate);
  Ran other = ctl("set lanLinkRate 64000");
  EXPECT_EQ(0, other.status);
  EXPECT_THAT(other.err, HasSubstr("without it this change goes back, too"));
  EXPECT_EQ(0, ctl("confirm --abort").status);
  EXPECT_EQ(0u, shm->config.lanLinkRate);
  expectTakenBack();
}

TEST_F(CtlConfirmTest, OnlyItsOwnUserConfirms) {
  if (readFile("/proc/self/loginuid").substr(0, 10) != "4294967295") GTEST_SKIP() << "the kernel knows who logged in";
  ASSERT_EQ(0, change("60").status);
  const OthersTerminal other(4242);
  for (const char* command : {"confirm", "confirm --abort"}) {
    Ran ran = other.ctl(command);
    EXPECT_EQ(7, ran.status) << command;
    EXPECT_THAT(ran.err, HasSubstr("not permitted to uid 4242: 'set wanLinkRate 3072000' of root")) << command;
  }
  EXPECT_EQ(0, ctl("confirm").status);
  EXPECT_EQ(kAfter, shm->config.wanLinkRate);
}

TEST_F(CtlConfirmTest, AUserWhoIsTakenBackHasTheOldPassword) {
  ASSERT_EQ(0, ctl("user add alice", "Passw0rd!\n").status);
  ASSERT_EQ(0, ctl("user remove alice --confirm 5").status);
  ASSERT_EQ(0, ctl("confirm --abort").status);
  EXPECT_EQ(0, ctl("user check alice", "Passw0rd!\n").status);
}

TEST_F(CtlConfirmTest, ARollbackCanBeTakenBack) {
  ASSERT_EQ(0, ctl("set wanLinkRate " + std::to_string(kAfter)).status);
  ASSERT_EQ(0, ctl("rollback 2 --confirm 5").status);
  EXPECT_EQ(kBefore, shm->config.wanLinkRate);
  ASSERT_EQ(0, ctl("confirm --abort").status);
  EXPECT_EQ(kAfter, shm->config.wanLinkRate);
}

TEST_F(CtlConfirmTest, WhatChangesNothingWaitsForNothing) {
  ASSERT_EQ(0, ctl("set wanLinkRate " + std::to_string(kBefore) + " --confirm 5").status);
  EXPECT_EQ(1, ctl("set wanMaximumTransferUnit 1501 --confirm 5").status);
  EXPECT_FALSE(fileExists(kJournal));
}

TEST_F(CtlConfirmTest, WhatOnlyReadsTakesNone) {
  for (const char* command : {"show --confirm 5", "history --confirm 5", "rule list --comment x"}) {
    Ran ran = ctl(command);
    EXPECT_EQ(2, ran.status) << command;
    EXPECT_THAT(ran.err, HasSubstr("goes with a command that changes something")) << command;
  }
  Ran ran = ctl("user passwd alice --confirm 5");
  EXPECT_EQ(2, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("cannot be taken back"));
  for (const char* option : {"--comment x", "--confirm 5"}) {
    EXPECT_EQ(2, ctl(std::string("stats reset ") + option).status) << "no revision has it";
  }
  EXPECT_EQ(2, ctl("set wanLinkRate 3072000 --confirm 0").status);
  EXPECT_EQ(kBefore, shm->config.wanLinkRate);
}

TEST_F(CtlConfirmTest, ADamagedJournalIsPutAsideAndNamed) {
  ASSERT_EQ(0, change("60").status);
  killWatcher();
  writeFile(kJournal, readFile(kJournal).substr(0, 50));
  Ran ran = ctl("show wanLinkRate");
  EXPECT_EQ(0, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("journal is damaged: kept as /var/lib/kestrove/journal.damaged"));
  EXPECT_FALSE(fileExists(kJournal));
  EXPECT_EQ(0, ctl("set lanLinkRate 64000 --confirm 5").status);
  EXPECT_EQ(0, ctl("confirm").status);
}

// What decides is what has passed since the start of the machine: the clock of the day is not asked.
TEST(Remaining, CountsFromTheStartOfTheMachine) {
  const ctl::Entry entry = {.deadline = 1000, .boot = "one"};
  EXPECT_EQ(400, ctl::remaining(entry, {"one", 600}));
  EXPECT_EQ(0, ctl::remaining(entry, {"one", 1000}));
  EXPECT_EQ(0, ctl::remaining(entry, {"one", 1001}));
  EXPECT_EQ(0, ctl::remaining(entry, {"two", 600})) << "another start";
}

}  // namespace
}  // namespace kestrove::testing
