// SPDX-License-Identifier: Apache-2.0
// The clock, restarts and factory resets from the command line.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <ctime>

#include "tests/support/peer.h"
#include "tests/support/recorder.h"
#include "tests/tools/programs.h"
#include "tests/tools/terminal.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kFile[] = "/etc/config/kestrove.conf";
constexpr char kAgentFile[] = "/var/config/snmpd.conf";
constexpr char kMarker[] = "/var/etc/config/configured";

class CtlControlTest : public StoreTest {
 protected:
  // What the library gave to the shell, without what this test gave it.
  std::vector<std::string> libraryLines() {
    std::vector<std::string> lines = shellLines();
    std::erase_if(lines, [](const std::string& line) { return line.starts_with(KESTROVECTL); });
    return lines;
  }
  // The newest event, as a reader of the log has it.
  Json lastEvent() {
    const Json events = ctl("--json events").json()["events"];
    return events.empty() ? Json() : events.back();
  }
};

TEST_F(CtlControlTest, TheClockIsShownInUtc) {
  const time_t before = time(nullptr);
  const Json clock = ctl("--json clock show").json();
  struct tm fields = {};
  const std::string shown = clock["time"];
  ASSERT_NE(nullptr, strptime(shown.c_str(), "%Y-%m-%dT%H:%M:%SZ", &fields));
  const time_t told = timegm(&fields);
  EXPECT_LE(before, told);
  EXPECT_GE(time(nullptr), told);
  EXPECT_TRUE(clock["uptimeSeconds"].is_number());
  EXPECT_TRUE(clock.contains("hardwareClock"));
  EXPECT_EQ(0, ctl("clock show").status);
}

TEST_F(CtlControlTest, SettingTheClockStopsTheEngineAndStartsItAgain) {
  clearRecords();
  Ran ran = ctl("--source 4 --user operator clock set 2030-02-03 04:05:06");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_THAT(ran.out, HasSubstr("clock set to 2030-02-03T04:05:06Z"));
  EXPECT_THAT(libraryLines(),
              ElementsAre("/usr/bin/killall kestrove > /dev/null 2>&1",
                          "/bin/date -u -s 2030.2.3-4:5:6 > /dev/null 2>&1", "/sbin/hwclock -u --systohc"));
  EXPECT_EQ(SHM_ON, shm->config.kestroveOperState);
  const Json event = lastEvent();
  EXPECT_EQ("System time set", event["description"]);
  EXPECT_EQ("operator", event["user"]);
  EXPECT_EQ("SSH", event["source"]);
}

TEST_F(CtlControlTest, AClockThatDoesNotFollowIsSaid) {
  Ran ran = ctl("clock set 2030-02-03T04:05:06Z");
  EXPECT_THAT(ran.err, HasSubstr("the clock was told and does not follow"));
  char now[32];
  const time_t seconds = time(nullptr);
  strftime(now, sizeof now, "%FT%TZ", gmtime(&seconds));
  Ran present = ctl(std::string("--json clock set ") + now);
  EXPECT_EQ(now, present.json()["set"]);
  EXPECT_THAT(present.err, Not(HasSubstr("does not follow")));
}

TEST_F(CtlControlTest, AnEngineThatWasOffIsSaidToBeOn) {
  shm->config.kestroveOperState = SHM_OFF;
  EXPECT_THAT(ctl("clock set 2030-02-03 04:05").err, HasSubstr("the engine was switched off and is switched on now"));
}

TEST_F(CtlControlTest, WhatIsNoTimeSetsNothing) {
  clearRecords();
  for (const char* wrong : {"now", "2030-02-30 00:00", "2030-13-01 00:00", "2030-02-03", "2030-02-03 24:00",
                            "2030-02-03 04:60", "1969-12-31 23:59", "2038-01-01 00:00", "2030-2-3 04:05",
                            "2030-02-03 04:05:61", "'2030-02-03 04:05' 06:07", "2030-02-03 04:05+01:00"}) {
    Ran ran = ctl(std::string("clock set ") + wrong);
    EXPECT_EQ(2, ran.status) << wrong;
  }
  EXPECT_THAT(libraryLines(), IsEmpty());
  EXPECT_EQ(2, ctl("clock").status);
}

TEST_F(CtlControlTest, ARestartIsLoggedAndThenMade) {
  clearRecords();
  Ran ran = ctl("--user operator reboot");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_THAT(programs(), ElementsAre("/sbin/reboot"));
  EXPECT_EQ("System Rebooted", lastEvent()["description"]);
  EXPECT_EQ("operator", lastEvent()["user"]);
  EXPECT_EQ(0, ctl("--json poweroff").status);
  EXPECT_THAT(programs(), ElementsAre("/sbin/reboot", "/sbin/poweroff"));
  EXPECT_EQ("System Stopped", lastEvent()["description"]);
}

TEST_F(CtlControlTest, ARestartThatFailsIsNoSuccess) {
  answer("reboot", "", 3);
  Ran ran = ctl("--json reboot");
  EXPECT_EQ(5, ran.status);
  EXPECT_EQ("/sbin/reboot gave 3", ran.json()["error"]["message"]);
}

TEST_F(CtlControlTest, WhatIsNotSavedIsSaidBeforeTheEnd) {
  ASSERT_EQ(0, setShmOperationalState(SHM_STATE_CONFIGURATION));
  EXPECT_THAT(ctl("poweroff").err, HasSubstr("what was changed in it is not saved"));
}

TEST_F(CtlControlTest, APersonIsAskedBeforeARestart) {
  clearRecords();
  Terminal careful({"reboot"});
  ASSERT_TRUE(careful.says("Restart this appliance? [y/N] "));
  careful.type("\n");
  EXPECT_EQ(1, careful.end());
  EXPECT_THAT(careful.heard(), HasSubstr("reboot: not agreed to; nothing is changed"));
  EXPECT_THAT(programs(), IsEmpty());
  Terminal sure({"poweroff"});
  ASSERT_TRUE(sure.says("Switch this appliance off? [y/N] "));
  sure.type("y\n");
  EXPECT_EQ(0, sure.end());
  EXPECT_THAT(programs(), ElementsAre("/sbin/poweroff"));
}

// A unit with something of everything that a reset takes.
class CtlResetTest : public CtlControlTest {
 protected:
  void SetUp() override {
    CtlControlTest::SetUp();
    ASSERT_EQ(0, ctl("user add alice", "Passw0rd!\n").status);
    ASSERT_EQ(0, ctl("set sysName 'branch seven'").status);
    run("mkdir -p /var/config /var/net-snmp /var/etc/config");
    writeFile(kAgentFile, "rocommunity public\n");
    writeFile(kMarker, "");
    writeFile(std::string(kFile) + ".bak", "SYS_NAME from the factory\n");
    logEvent(21, 2, "admin");
    clearRecords();
  }

  bool untouched() {
    return shm->config.userCount == 1 && getEventCount() > 0 && fileExists(kAgentFile) && fileExists(kMarker) &&
           shm->operationalState == SHM_STATE_OPERATIONAL &&
           readFile(kFile).find("branch seven") != std::string::npos && programs().empty();
  }
};

TEST_F(CtlResetTest, WhereNobodyCanBeAskedItNeedsAWord) {
  Ran ran = ctl("factory-reset");
  EXPECT_EQ(2, ran.status);
  EXPECT_THAT(ran.err, AllOf(HasSubstr("users      alice\n"), HasSubstr("needs --yes; nothing is changed")));
  EXPECT_EQ(2, ctl("--json factory-reset --keep-users").json()["error"]["exit"]);
  EXPECT_TRUE(untouched());
}

TEST_F(CtlResetTest, APersonSeesWhatGoesAndMaySayNo) {
  Terminal terminal({"factory-reset"});
  ASSERT_TRUE(terminal.says("Do it and restart the appliance? [y/N] "));
  for (const char* part : {"users      alice",
                           "settings   all that /etc/config/kestrove.conf has; "
                           "/etc/config/kestrove.conf.bak takes their place",
                           " events", kAgentFile, kMarker}) {
    EXPECT_THAT(terminal.heard(), HasSubstr(part));
  }
  terminal.type("n\n");
  EXPECT_EQ(1, terminal.end());
  EXPECT_TRUE(untouched());
}

TEST_F(CtlResetTest, AnInterruptChangesNothing) {
  Terminal terminal({"factory-reset"});
  ASSERT_TRUE(terminal.says("[y/N] "));
  terminal.type("\x03");
  EXPECT_EQ(128 + SIGINT, terminal.end());
  EXPECT_TRUE(untouched());
}

TEST_F(CtlResetTest, EverythingGoesAndTheApplianceRestarts) {
  Terminal terminal({"factory-reset"});
  ASSERT_TRUE(terminal.says("[y/N] "));
  terminal.type("yes\n");
  EXPECT_EQ(0, terminal.end());
  EXPECT_THAT(terminal.heard(), HasSubstr("factory defaults restored; the appliance restarts"));
  EXPECT_EQ(0, shm->config.userCount);
  EXPECT_FALSE(fileExists(kAgentFile));
  EXPECT_FALSE(fileExists(kMarker));
  EXPECT_EQ("SYS_NAME from the factory\n", readFile(kFile));
  EXPECT_EQ(SHM_STATE_CONFIGURATION, static_cast<int>(shm->operationalState)) << "nothing is saved over it";
  EXPECT_THAT(programs(), Contains("/sbin/reboot"));
  EXPECT_FALSE(fileLockHeld());
}

TEST_F(CtlResetTest, ItsRevisionIsWhatTheNextStartHas) {
  ASSERT_EQ(0, ctl("factory-reset --yes --no-reboot --comment 'sold on'").status);
  const Json newest = ctl("--json history 1").json()[0];
  EXPECT_EQ("factory-reset --yes --no-reboot", newest["command"]);
  EXPECT_EQ("sold on", newest["comment"]);
  const Json shown = ctl("--json history show " + newest["revision"].dump()).json();
  EXPECT_THAT(shown["diff"]["after"].dump(), HasSubstr("from the factory"));
  ASSERT_EQ(0, run("shm-init --replace --config " + std::string(kFile)).status);
  shm_detach();
  shm = nullptr;
  ASSERT_EQ(0, ctl("set sysName sold").status);
  EXPECT_EQ(newest["revision"], ctl("--json history").json()[1]["revision"]) << "nothing came from outside";
}

TEST_F(CtlResetTest, UsersMayStay) {
  Ran ran = ctl("--json factory-reset --keep-users --yes");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_EQ(1, shm->config.userCount);
  EXPECT_TRUE(fileExists(kMarker));
  EXPECT_FALSE(fileExists(kAgentFile));
  const Json removed = ran.json()["removed"];
  EXPECT_TRUE(removed["users"].empty());
  EXPECT_EQ("/etc/config/kestrove.conf.bak", removed["settingsAfterwards"]);
  EXPECT_THAT(removed["files"].dump(), AllOf(HasSubstr(kAgentFile), Not(HasSubstr(kMarker))));
}

TEST_F(CtlResetTest, WhatWaitsForItsConfirmationComesFirst) {
  ASSERT_EQ(0, ctl("set sysName tried --confirm 5").status);
  Ran ran = ctl("factory-reset --yes");
  EXPECT_EQ(1, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("waits for its confirmation"));
  EXPECT_EQ(1, shm->config.userCount);
  ASSERT_EQ(0, ctl("confirm").status);
  EXPECT_EQ(0, ctl("factory-reset --yes").status);
}

TEST_F(CtlResetTest, TheRestartMayBeLeftToTheCaller) {
  Ran ran = ctl("factory-reset --yes --no-reboot");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_THAT(ran.out, HasSubstr("they take effect when the appliance restarts"));
  EXPECT_THAT(programs(), Not(Contains(StartsWith("/sbin/reboot"))));
}

TEST_F(CtlResetTest, WithoutABackupTheFactoryDefaultsAreLeft) {
  unlink("/etc/config/kestrove.conf.bak");
  EXPECT_THAT(ctl("factory-reset").err, HasSubstr("no backup takes their place: the factory defaults alone"));
}

TEST_F(CtlResetTest, AFileThatCannotGoStopsItHalfWay) {
  unlink(kAgentFile);
  ASSERT_EQ(0, mkdir(kAgentFile, 0755));
  ASSERT_EQ(0, mkdir((std::string(kAgentFile) + "/in").c_str(), 0755));
  Ran ran = ctl("factory-reset --yes");
  EXPECT_NE(0, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("the reset stopped half-way; the store is in Configuration Mode"));
  EXPECT_THAT(programs(), Not(Contains("/sbin/reboot")));
  EXPECT_TRUE(fileExists(kFile));
}

}  // namespace
}  // namespace kestrove::testing
