// SPDX-License-Identifier: Apache-2.0
// kestrovectl from the outside: what it prints, how it ends, what is then in the store.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/shm.h>
#include <unistd.h>

#include "tests/support/peer.h"
#include "tests/tools/programs.h"
#include "tools/common/loading_note.h"

namespace kestrove::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class CtlTest : public StoreTest {};

Json itemValue(const std::string& name) { return ctl("--json show " + name).json()[0]["value"]; }

TEST(CtlWithoutStore, SaysSoAndEndsWithThree) {
  for (const char* command : {"show", "save", "rule list", "events", "stats", "check", "dump", "user list"}) {
    Ran ran = ctl(command);
    EXPECT_EQ(3, ran.status) << command;
    EXPECT_THAT(ran.err, HasSubstr("there is no store")) << command;
    EXPECT_THAT(ran.out, IsEmpty()) << command;
  }
  EXPECT_EQ(3, ctl("--json show").json()["error"]["exit"]);
  EXPECT_EQ(3, ctl("status").status);
  EXPECT_EQ(3, ctl("explain save").status);
  EXPECT_EQ("absent", ctl("--json status").json()["store"]);
}

TEST(CtlWithoutStore, NamesASegmentOfAnotherSize) {
  ASSERT_NE(-1, shmget(SHM_KEY, 4096, IPC_CREAT | 0666));
  EXPECT_EQ("foreign segment under the key", ctl("--json status").json()["store"]);
  EXPECT_EQ(3, ctl("show").status);
  dropStore();
}

TEST(CtlUsage, WrongWordsEndWithTwo) {
  for (const char* command : {"", "frobnicate", "set", "set wanLinkRate", "rule add", "mode single 1", "rule add x",
                              "--source 9 status", "mode single 0 5", "stats reset everything"}) {
    EXPECT_EQ(2, ctl(command).status) << command;
  }
  EXPECT_EQ(2, ctl("--json frobnicate").json()["error"]["exit"]);
  EXPECT_EQ(0, ctl("--help").status);
  EXPECT_THAT(ctl("--version").out, HasSubstr("layout "));
}

TEST_F(CtlTest, StatusTellsStateSizeAndWhoHoldsTheLock) {
  Json status = ctl("--json status").json();
  EXPECT_EQ("present", status["store"]);
  EXPECT_EQ(SHM_SIZE, status["size"]);
  EXPECT_EQ(1, status["state"]);
  EXPECT_EQ("nobody", status["lockHeldBy"]);
}

TEST_F(CtlTest, SetsAndShowsItemsByName) {
  EXPECT_EQ(0, ctl("set wanLinkRate 2048000").status);
  EXPECT_EQ(2048000u, shm->config.wanLinkRate);
  EXPECT_EQ(2048000, itemValue("wanLinkRate"));
  EXPECT_EQ(0, ctl("set compression on").status);
  EXPECT_EQ("on", itemValue("compression"));
  EXPECT_EQ(0, ctl("set sysName 'branch seven'").status);
  EXPECT_EQ("branch seven", itemValue("sysName"));
  EXPECT_THAT(readFile("/etc/config/kestrove.conf"), HasSubstr("SYS_NAME                  branch seven\n"));
}

TEST_F(CtlTest, NetworkItemsTakeAddressesAndMasks) {
  EXPECT_EQ(0, ctl("set managementAddressMask 24").status);
  EXPECT_EQ("255.255.255.0", itemValue("managementAddressMask"));
  EXPECT_EQ(0, ctl("set lanIpAddress 010.001.002.003").status);
  EXPECT_EQ("10.1.2.3", itemValue("lanIpAddress"));
  EXPECT_EQ(2, ctl("set lanIpAddress 10.1.2").status);
  EXPECT_EQ(1, ctl("set managementAddressMask 255.0.255.0").status);
}

TEST_F(CtlTest, RefusalsCarryTheTextOfTheLibrary) {
  Ran ran = ctl("set wanMaximumTransferUnit 1501");
  EXPECT_EQ(1, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("576..1500"));
  EXPECT_THAT(ran.err, HasSubstr("The given value does not fall in the allowed range"));
  EXPECT_EQ(12, ctl("--json set wanMaximumTransferUnit 1501").json()["error"]["code"]);
  EXPECT_EQ(1, ctl("set minRate 5").status);
  EXPECT_EQ(2, ctl("set noSuchItem 5").status);
  EXPECT_EQ(2, ctl("set wanLinkRate fast").status);
  EXPECT_EQ(2, ctl("set wanLinkRate -5").status);
}

TEST_F(CtlTest, EventsListFollowAndClear) {
  logEvent(21, 2, "admin");
  Json events = ctl("--json events").json()["events"];
  ASSERT_EQ(1u, events.size());
  EXPECT_EQ("Web interface login", events[0]["description"]);
  EXPECT_EQ("admin", events[0]["user"]);
  EXPECT_THAT(ctl("events list").out, HasSubstr("Web interface login"));
  Peer logger([](const Peer::Line&) {
    usleep(300000);
    return logEvent(24, 3, "later");
  });
  Ran followed = ctl("events follow --seconds 2");
  EXPECT_THAT(followed.out, HasSubstr("CLI Login"));
  EXPECT_THAT(followed.out, ::testing::Not(HasSubstr("Web interface login")));
  EXPECT_EQ(0, ctl("--user operator events clear").status);
  EXPECT_THAT(ctl("events").out, HasSubstr("operator"));
  EXPECT_EQ(1, getEventCount());
}

TEST_F(CtlTest, RulesAreAddedMovedChangedDeleted) {
  EXPECT_EQ(0, ctl("rule add 0 --to 10.1.2.3/16 --proto tcp --dport 80 --dport-end 90 --kbps 512").status);
  EXPECT_EQ(0, ctl("rule add 0 --from 2001:db8::1/32 --target drop --proto udp").status);
  Json rules = ctl("--json rule list").json();
  ASSERT_EQ(3u, rules.size());
  EXPECT_EQ("2001:db8::/32", rules[0]["source"]);
  EXPECT_EQ("drop", rules[0]["target"]);
  EXPECT_EQ("10.1.0.0/16", rules[1]["destination"]);
  EXPECT_EQ("80-90", rules[1]["destinationPorts"]);
  EXPECT_EQ(512, rules[1]["kbit/s"]);
  EXPECT_EQ(0, ctl("rule move 1 0").status);
  EXPECT_EQ(0, ctl("rule change 0 --status nis --accel off").status);
  EXPECT_EQ(2u, shm->filterTable.rule[0].ruleAction);
  EXPECT_EQ(80, shm->filterTable.rule[0].destPort);
  EXPECT_EQ(0, ctl("rule delete 0").status);
  EXPECT_EQ(2, shm->filterTable.ruleCount);
  Ran refused = ctl("rule delete 1");
  EXPECT_EQ(1, refused.status);
  EXPECT_THAT(refused.err, HasSubstr("Object is read-only"));
}

TEST_F(CtlTest, UsersComeAndGoWithPasswordsFromStandardInput) {
  EXPECT_EQ(0, ctl("user add alice --admin", "Passw0rd!\n").status);
  EXPECT_EQ(1, shm->config.adminUserCount);
  EXPECT_EQ(0, ctl("user check alice", "Passw0rd!\n").status);
  EXPECT_EQ(1, ctl("user check alice", "wrong-Pass1\n").status);
  EXPECT_EQ(1, ctl("user add bobby", "short\n").status);
  EXPECT_EQ(1, ctl("user add carol", "\n").status) << "an empty password";
  EXPECT_EQ(1, shm->config.userCount);
  Json users = ctl("--json user list").json();
  EXPECT_EQ("alice", users[0]["name"]);
  EXPECT_EQ(true, users[0]["passwordLine"]);
  EXPECT_EQ(0, ctl("user remove alice").status);
  EXPECT_EQ(0, shm->config.userCount);
}

TEST_F(CtlTest, TheBeginningOfANameIsNoName) {
  ASSERT_EQ(0, ctl("user add alice", "Passw0rd!\n").status);
  writeFile("/etc/passwd", readFile("/etc/passwd") + "ali:x:77:77::/:/bin/false\n");
  EXPECT_EQ(1, authenticateUser("ali", nullptr)) << "the library itself matches the beginning";
  EXPECT_EQ(1, ctl("user check ali", "Passw0rd!\n").status);
  EXPECT_EQ(1, ctl("user remove ali").status);
}

TEST_F(CtlTest, APasswordChangesOnlyAgainstTheOldOne) {
  ASSERT_EQ(0, ctl("user add alice --admin", "Passw0rd!\n").status);
  EXPECT_EQ(1, ctl("user passwd alice", "Wrong-one1\nXyzuvw9#k\n").status);
  EXPECT_EQ(1, ctl("user passwd alice", "Passw0rd!\nPassw0rd?\n").status) << "too close to the old one";
  EXPECT_EQ(0, ctl("user check alice", "Passw0rd!\n").status);
  EXPECT_EQ(0, ctl("user passwd alice", "Passw0rd!\nXyzuvw9#k\n").status);
  EXPECT_EQ(0, ctl("user check alice", "Xyzuvw9#k\n").status);
  EXPECT_EQ(1, shm->config.adminUserCount) << "the record stays";
}

TEST_F(CtlTest, LoadReadsAFileAndPutsTheStateBack) {
  writeFile("/tmp/some.conf", "LAN_MTU 1400\n");
  EXPECT_EQ(0, ctl("load /tmp/some.conf").status);
  EXPECT_EQ(1400u, shm->config.lanMaximumTransferUnit);
  EXPECT_EQ(uint32_t{SHM_STATE_OPERATIONAL}, shm->operationalState);
  EXPECT_FALSE(fileExists("/var/lock/shm.loading"));
  EXPECT_EQ(5, ctl("load /tmp/none.conf").status);
}

TEST_F(CtlTest, AStateLeftByADeadLoaderIsNamedAndPutBack) {
  Peer loader([](const Peer::Line& line) {
    tools::LoadingNote note(SHM_STATE_DEBUG);
    shm->operationalState = SHM_STATE_CONFIGURATION;
    line.say('l');
    line.hear();
    return 0;
  });
  ASSERT_EQ('l', loader.line().hear());
  EXPECT_THAT(ctl("show minMtu").err, IsEmpty()) << "the loader lives";
  EXPECT_EQ(uint32_t{SHM_STATE_CONFIGURATION}, shm->operationalState);
  loader.kill();
  EXPECT_THAT(ctl("show minMtu").err, HasSubstr("died while it loaded a configuration; state 5 put back"));
  EXPECT_EQ(uint32_t{SHM_STATE_DEBUG}, shm->operationalState);
}

TEST_F(CtlTest, SaveWritesTheFileInEveryState) {
  EXPECT_EQ(0, ctl("save").status);
  EXPECT_TRUE(fileExists("/etc/config/kestrove.conf"));
  unlink("/etc/config/kestrove.conf");
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_EQ(0, ctl("save").status);
  EXPECT_TRUE(fileExists("/etc/config/kestrove.conf"));
}

TEST_F(CtlTest, DumpPrintsTheWholeOrASection) {
  EXPECT_THAT(ctl("dump").out, HasSubstr("Kestrove shared memory:\n"));
  Ran section = ctl("dump qos");
  EXPECT_THAT(section.out, ::testing::StartsWith("-->   Qos Stats"));
  EXPECT_THAT(section.out, ::testing::Not(HasSubstr("Proc Stats")));
  EXPECT_EQ(2, ctl("dump nothing").status);
}

TEST_F(CtlTest, DumpAsJsonHasEverySectionAndNothingElse) {
  shm->config.ipv6Support = SHM_ON;
  shm->config.lanIpAddress = 0x0100000A;
  Json dump = ctl("--json dump").json();
  for (const char* section : {"files", "users", "config", "addresses", "stats", "notifications", "interfaces", "qos",
                              "tasks", "sessions", "routes", "routes6", "rules", "events"}) {
    EXPECT_TRUE(dump.contains(section)) << section;
  }
  EXPECT_EQ("10.0.0.1", dump["config"]["lanIpAddress"]);
  EXPECT_EQ("on", dump["config"]["ipv6Support"]);
  EXPECT_EQ("LAN", ctl("--json dump qos").json()["qos"][9]["class"]);
}

TEST_F(CtlTest, StatsAreShownAndReset) {
  shm->statistics.totalUncompressedDataSize = 1ull << 40;
  EXPECT_EQ(1ull << 40, ctl("--json stats").json()["totalUncompressedDataSize"]);
  EXPECT_EQ(0, ctl("stats reset compression").status);
  EXPECT_EQ(0u, shm->statistics.totalUncompressedDataSize);
}

TEST_F(CtlTest, TasksAndEngineTellWhoLives) {
  shm->taskPids[4] = getpid();
  shm->pendingChanges = 1u << 7;
  Json engine = ctl("--json engine status").json();
  EXPECT_EQ("alive", engine["process"]);
  EXPECT_EQ(Json::array({"rules"}), engine["pendingChanges"]);
  EXPECT_EQ("none", ctl("--json task list").json()[1]["process"]);
}

TEST_F(CtlTest, CheckNamesWhatIsWrong) {
  EXPECT_EQ(0, ctl("check").status);
  shm->routes.head = 5000;
  shm->filterTable.ruleCount = -3;
  Ran ran = ctl("--json check");
  EXPECT_EQ(4, ran.status);
  EXPECT_EQ(2u, ran.json()["findings"].size());
}

TEST_F(CtlTest, CheckNamesAUserWithoutPasswordLine) {
  UserAccount account = {};
  strcpy(account.username, "ghost");
  ASSERT_EQ(0, shm_addUser(&account));
  Json findings = ctl("--json check").json()["findings"];
  ASSERT_EQ(1u, findings.size());
  EXPECT_EQ("ghost stands in the store, but not in /etc/passwd", findings[0]["finding"]);
}

TEST_F(CtlTest, AForeignArchiveIsRefusedBeforeItIsUnpacked) {
  ASSERT_EQ(0, run("mkdir -p /tmp/z/sub && cd /tmp/z && echo x > sub/evil && echo y > /tmp/evil && "
                   "zip -q /usr/local/apache2/htdocs/config-1.zip ../evil sub/evil")
                   .status);
  Ran ran = ctl("state load");
  EXPECT_EQ(1, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("would leave the folder"));
  EXPECT_EQ(1, run("rm /usr/local/apache2/htdocs/*.zip; " KESTROVECTL " state load").status);
  writeFile("/usr/local/apache2/htdocs/config-2.zip", "no archive");
  EXPECT_EQ(5, ctl("state load").status);
}

}  // namespace
}  // namespace kestrove::testing
