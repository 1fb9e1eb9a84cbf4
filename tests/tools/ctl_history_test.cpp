// SPDX-License-Identifier: Apache-2.0
// history and rollback: every change with its author, and the way back.
#include <gmock/gmock.h>
#include <pty.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr char kHome[] = "/var/lib/kestrove";

std::string fileOf(int revision) { return std::string(kHome) + "/revision-" + std::to_string(revision); }

Json history() { return ctl("--json history").json(); }

class CtlHistoryTest : public StoreTest {
 protected:
  // A change that is made, has no revision and says so.
  void expectMadeWithoutRevision(const char* reason) {
    Ran ran = ctl("set wanLinkRate 3072000");
    EXPECT_EQ(8, ran.status);
    EXPECT_THAT(ran.err, AllOf(HasSubstr("applied, without a revision: "), HasSubstr(reason)));
    EXPECT_EQ(3072000u, shm->config.wanLinkRate);
    Json result = ctl("--json set wanLinkRate 4096000").json();
    EXPECT_TRUE(result.contains("revision") && result["revision"].is_null());
    EXPECT_EQ(4096000u, shm->config.wanLinkRate);
    Ran risky = ctl("set wanLinkRate 5120000 --confirm 5");
    EXPECT_TRUE(risky.status == 5 || risky.status == 7) << risky.status;
    EXPECT_THAT(risky.err, HasSubstr(reason));
    EXPECT_EQ(4096000u, shm->config.wanLinkRate) << "what could not be taken back is not made";
  }
};

TEST_F(CtlHistoryTest, EveryChangeIsARevisionWithItsAuthor) {
  ASSERT_EQ(0, ctl("set wanLinkRate 2048000 --comment 'slower line' --source 4").status);
  ASSERT_EQ(
      0, run(std::string("USER=mallory ") + KESTROVECTL + " route add 172.20.0.0/16 192.168.10.3 --disabled").status);
  Json rows = history();
  ASSERT_EQ(3u, rows.size());
  EXPECT_EQ(3, rows[0]["revision"]);
  EXPECT_EQ("route add 172.20.0.0/16 192.168.10.3 --disabled", rows[0]["command"]);
  EXPECT_NE("mallory", rows[0]["user"]);
  EXPECT_EQ(rows[0]["user"], rows[1]["user"]);
  EXPECT_EQ("System", rows[0]["source"]);
  EXPECT_EQ("slower line", rows[1]["comment"]);
  EXPECT_EQ("SSH", rows[1]["source"]);
  EXPECT_EQ("set wanLinkRate 2048000", rows[1]["command"]);
  std::vector<std::string> names;
  for (const auto& [name, value] : rows[0].items()) names.push_back(name);
  EXPECT_THAT(names, ElementsAre("revision", "time", "user", "source", "comment", "command"));
  EXPECT_EQ("outside", rows[2]["source"]) << "what was there before";
  EXPECT_EQ(1u, ctl("--json history 1").json().size());
}

TEST_F(CtlHistoryTest, WhatChangesNothingIsNoRevision) {
  ASSERT_EQ(0, ctl("set wanLinkRate 2048000").status);
  ASSERT_EQ(0, ctl("set wanLinkRate 2048000").status);
  ASSERT_EQ(0, ctl("route freshen").status);
  ASSERT_EQ(1, ctl("set wanMaximumTransferUnit 1501").status);
  ASSERT_EQ(1, ctl("rule delete 7").status);
  EXPECT_EQ(2u, history().size());
}

TEST_F(CtlHistoryTest, WhatOthersChangedIsARevisionOfItsOwn) {
  ASSERT_EQ(0, ctl("set wanLinkRate 2048000").status);
  ASSERT_EQ(0, setKestroveConfigItem(SHM_ITEM_LAN_LINK_RATE, 640000, 0, "--"));
  ASSERT_EQ(2u, history().size()) << "it shows when the next one is made";
  ASSERT_EQ(0, ctl("set sysName seven").status);
  Json rows = history();
  ASSERT_EQ(4u, rows.size());
  EXPECT_EQ("outside", rows[1]["source"]);
  EXPECT_EQ("", rows[1]["user"]);
  EXPECT_THAT(ctl("history show 3").out, HasSubstr("+set lanLinkRate 640000"));
  EXPECT_THAT(ctl("history show 4").out, AllOf(HasSubstr("+set sysName seven"), Not(HasSubstr("lanLinkRate"))));
}

TEST_F(CtlHistoryTest, AFileThatIsLoadedIsARevision) {
  writeFile("/tmp/some.conf", "LAN_MTU 1400\n");
  ASSERT_EQ(0, ctl("load /tmp/some.conf").status);
  EXPECT_EQ("load /tmp/some.conf", history()[0]["command"]);
}

TEST_F(CtlHistoryTest, TheNewestFiftyAreKept) {
  for (int i = 0; i < 55; ++i) ASSERT_EQ(0, ctl("set wanLinkRate " + std::to_string(2048000 + i)).status);
  Json rows = history();
  ASSERT_EQ(50u, rows.size());
  EXPECT_EQ(56, rows[0]["revision"]);
  EXPECT_EQ(7, rows[49]["revision"]);
  EXPECT_FALSE(fileExists(fileOf(6)));
  Ran gone = ctl("history show 6");
  EXPECT_EQ(1, gone.status);
  EXPECT_THAT(gone.err, HasSubstr("revision 6: there is none"));
}

TEST_F(CtlHistoryTest, ADamagedRevisionIsNamedAndSkipped) {
  for (int rate : {2048000, 3072000, 4096000}) ASSERT_EQ(0, ctl("set wanLinkRate " + std::to_string(rate)).status);
  writeFile(fileOf(3), readFile(fileOf(3)).substr(0, 100));
  std::string text = readFile(fileOf(4));
  text[text.size() / 2] ^= 1;
  writeFile(fileOf(4), text);
  Ran ran = ctl("--json history");
  EXPECT_EQ(0, ran.status);
  EXPECT_THAT(ran.err, AllOf(HasSubstr(fileOf(3) + ": damaged, skipped"), HasSubstr(fileOf(4) + ": damaged, skipped")));
  EXPECT_EQ(2u, ran.json().size());
  EXPECT_EQ(5, ctl("rollback 3").status);
  EXPECT_EQ(4096000u, shm->config.wanLinkRate);
  ASSERT_EQ(0, ctl("set wanLinkRate 5120000").status);
  EXPECT_EQ(6, history()[0]["revision"]) << "one for what the damaged one held, one for the change";
}

TEST_F(CtlHistoryTest, AFolderThatOthersCanReachIsRefused) {
  ASSERT_EQ(0, mkdir("/tmp/elsewhere", 0700));
  ASSERT_EQ(0, symlink("/tmp/elsewhere", kHome));
  expectMadeWithoutRevision("a link or a file, no folder");
  ASSERT_EQ(0, unlink(kHome));
  ASSERT_EQ(0, mkdir(kHome, 0700));
  ASSERT_EQ(0, chmod(kHome, 0770));
  expectMadeWithoutRevision("others may write there");
}

TEST_F(CtlHistoryTest, OnAFullDiskAChangeIsMadeWithoutRevision) {
  ASSERT_EQ(0, ctl("set wanLinkRate 2048000").status);
  ASSERT_EQ(0, mount("tmpfs", kHome, "tmpfs", 0, "size=32k,mode=0700"));
  run(std::string("dd if=/dev/zero of=") + kHome + "/filler bs=1k");
  expectMadeWithoutRevision("No space left on device");
  EXPECT_FALSE(fileExists(std::string(kHome) + "/journal"));
  EXPECT_EQ(0, ctl("show wanLinkRate").status);
}

TEST_F(CtlHistoryTest, InAFolderThatCannotBeWrittenToo) {
  mkdir(kHome, 0700);
  ASSERT_EQ(0, mount("tmpfs", kHome, "tmpfs", MS_RDONLY, "mode=0700"));
  expectMadeWithoutRevision("Read-only file system");
  EXPECT_EQ("no revisions\n", ctl("history").out);
}

TEST_F(CtlHistoryTest, NoPasswordGetsIn) {
  ASSERT_EQ(0, ctl("user add alice", "Passw0rd!\n").status);
  ASSERT_EQ(0, ctl("user passwd alice", "Passw0rd!\nXyzuvw9#k\n").status);
  Json rows = history();
  EXPECT_EQ("user passwd alice", rows[0]["command"]);
  EXPECT_EQ("user add alice", rows[1]["command"]);
  char hash[256] = {};
  ASSERT_EQ(0, getUserPassword("alice", hash));
  EXPECT_NE(0, run(std::string("grep -rqF -e 'Passw0rd!' -e 'Xyzuvw9#k' -e '") + hash + "' " + kHome).status);
}

TEST_F(CtlHistoryTest, TwoOperatorsAtOnceHaveEachTheirRevisions) {
  const std::string one = std::string(KESTROVECTL) + " set wanLinkRate 20480$i || exit 1; ";
  const std::string other = std::string(KESTROVECTL) + " route add 172.20.$i.0/24 192.168.10.3 --disabled || exit 1; ";
  Ran ran = run("(for i in 10 11 12 13 14; do " + one + "done) & a=$!; (for i in 10 11 12 13 14; do " + other +
                "done) & wait $! && wait $a");
  EXPECT_EQ(0, ran.status) << ran.err;
  Json rows = history();
  ASSERT_EQ(11u, rows.size());
  for (size_t i = 0; i < 10; ++i) EXPECT_EQ("System", rows[i]["source"]) << i;
}

TEST_F(CtlHistoryTest, TheFolderCanBeElsewhere) {
  ASSERT_EQ(0, run(std::string("KESTROVE_HOME=/tmp/mine ") + KESTROVECTL + " set wanLinkRate 2048000").status);
  EXPECT_TRUE(fileExists("/tmp/mine/revision-2"));
  EXPECT_FALSE(fileExists(kHome));
  struct stat facts;
  ASSERT_EQ(0, stat("/tmp/mine", &facts));
  EXPECT_EQ(0700u, facts.st_mode & 07777);
}

TEST_F(CtlHistoryTest, RollbackAppliesWhatDiffersAndSaysIt) {
  ASSERT_EQ(0, ctl("set wanLinkRate 2048000").status);
  ASSERT_EQ(0, ctl("route add 172.20.0.0/16 192.168.10.3 --disabled").status);
  ASSERT_EQ(0, ctl("set wanLinkRate 3072000").status);
  ASSERT_EQ(0, ctl("rule add 0 --to 10.0.0.0/8").status);
  Ran ran = ctl("rollback 2 --comment 'too fast'");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_THAT(ran.out, AllOf(HasSubstr("-set wanLinkRate 3072000\n+set wanLinkRate 2048000\n"),
                             HasSubstr("-route add 172.20.0.0/16"), HasSubstr("-rule add"),
                             HasSubstr("settings of revision 2 are back\n")));
  EXPECT_EQ(2048000u, shm->config.wanLinkRate);
  EXPECT_EQ(1, shm->filterTable.ruleCount);
  Json newest = history()[0];
  EXPECT_EQ("rollback 2", newest["command"]);
  EXPECT_EQ("too fast", newest["comment"]);
  EXPECT_FALSE(fileExists(std::string(kHome) + "/journal"));
}

TEST_F(CtlHistoryTest, TheSecondRollbackChangesNothing) {
  ASSERT_EQ(0, ctl("set wanLinkRate 2048000").status);
  ASSERT_EQ(0, ctl("set wanLinkRate 3072000").status);
  EXPECT_EQ(true, ctl("--json rollback 2").json()["changed"]);
  const std::string saved = readFile("/etc/config/kestrove.conf");
  const std::string store(reinterpret_cast<const char*>(shm), SHM_SIZE);
  EXPECT_EQ(false, ctl("--json rollback 2").json()["changed"]);
  EXPECT_EQ(4u, history().size());
  EXPECT_EQ(store, std::string(reinterpret_cast<const char*>(shm), SHM_SIZE));
  EXPECT_EQ(saved, readFile("/etc/config/kestrove.conf"));
}

TEST_F(CtlHistoryTest, AUserThatComesBackHasNoPassword) {
  ASSERT_EQ(0, ctl("user add alice", "Passw0rd!\n").status);
  ASSERT_EQ(0, ctl("user remove alice").status);
  Ran ran = ctl("rollback 2");
  EXPECT_THAT(ran.err, HasSubstr("user alice is back without a password: give it one"));
  EXPECT_EQ(1, shm->config.userCount);
  EXPECT_EQ(1, ctl("user check alice", "Passw0rd!\n").status);
}

TEST_F(CtlHistoryTest, ACommandOnACopyKeepsNothing) {
  Ran ran = run(std::string("KESTROVE_HOME= ") + KESTROVECTL + " set wanLinkRate 2048000");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_FALSE(fileExists(kHome));
}

}  // namespace
}  // namespace kestrove::testing
