// SPDX-License-Identifier: Apache-2.0
// Whole states with the real zip and unzip.

#include <gmock/gmock.h>
#include <stdio.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <time.h>

#include "tests/state/state_fixture.h"
#include "tests/support/kernel.h"
#include "tests/support/peer.h"

namespace kestrove::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

class ArchiveTest : public StateTest {
 protected:
  static void forgetFiles() {
    for (const char* path : {kConfigFile, kAgentFile, kAgentStateFile}) unlink(path);
    writeFile(kPasswd, "another\n");
  }
};

TEST_F(ArchiveTest, SavedAndRestored) {
  EXPECT_EQ(0, saveSystemState(0, "--"));
  std::vector<std::string> names = namesIn(kDocuments);
  EXPECT_THAT(names, ElementsAre(MatchesRegex("config-[0-9]{8}-[0-9]{6}.zip"), "state",
                                 MatchesRegex("state-[0-9]{8}-[0-9]{6}.txt")));
  EXPECT_EQ(names[0].substr(7, 15), names[2].substr(6, 15));
  EXPECT_THAT(namesIn(kStaging), IsEmpty());
  EXPECT_EQ("kestrove.conf.configSaved\npasswd.configSaved\nsnmpd.conf.configSaved\nvarsnmpd.conf.configSaved\n",
            outputOf("unzip -Z1 " + std::string(kDocuments) + "/config*.zip"));
  EXPECT_THAT(readFile(std::string(kDocuments) + "/" + names[2]), HasSubstr("set interfaceMode"));
  forgetFiles();
  EXPECT_EQ(0, loadSystemState(0, "--"));
  EXPECT_EQ("the configuration\n", readFile(kConfigFile));
  EXPECT_EQ("the agent\n", readFile(kAgentFile));
  EXPECT_EQ("the agent's state\n", readFile(kAgentStateFile));
  EXPECT_EQ("root:x:0:0:root:/root:/bin/sh\n", readFile(kPasswd));
  EXPECT_THAT(namesIn(kStaging), IsEmpty());
}

TEST_F(ArchiveTest, SecondStateReplacesTheFirst) {
  EXPECT_EQ(0, saveSystemState(0, "--"));
  std::vector<std::string> first = namesIn(kDocuments);
  for (time_t now = time(nullptr); time(nullptr) == now;) usleep(10000);
  EXPECT_EQ(0, saveSystemState(0, "--"));
  std::vector<std::string> second = namesIn(kDocuments);
  ASSERT_EQ(3u, second.size());
  EXPECT_LT(first[0], second[0]);
  EXPECT_LT(first[2], second[2]);
}

TEST_F(ArchiveTest, TimestampIsUniversalTime) {
  setenv("TZ", "KES-9", 1);
  tzset();
  time_t before = time(nullptr);
  EXPECT_EQ(0, saveSystemState(0, "--"));
  struct tm moment = {};
  strptime(namesIn(kDocuments)[0].c_str(), "config-%Y%m%d-%H%M%S", &moment);
  time_t stamp = timegm(&moment);
  EXPECT_GE(stamp, before);
  EXPECT_LE(stamp, time(nullptr));
  unsetenv("TZ");
  tzset();
}

TEST_F(ArchiveTest, StateWithoutAnAgent) {
  unlink(kAgentFile);
  EXPECT_EQ(0, saveSystemState(0, "--"));
  EXPECT_THAT(syslogLines(), Contains("debug: /var/config/snmpd.conf missing"));
  EXPECT_EQ("kestrove.conf.configSaved\npasswd.configSaved\nvarsnmpd.conf.configSaved\n",
            outputOf("unzip -Z1 " + std::string(kDocuments) + "/config*.zip"));
}

TEST_F(ArchiveTest, RestoreWithNoArchive) {
  EXPECT_EQ(-1, loadSystemState(0, "--"));
  EXPECT_THAT(syslogLines(), Contains("err: Failed: /usr/bin/unzip -o -qq /usr/local/apache2/htdocs/config*.zip -d "
                                      "/usr/local/apache2/htdocs/state/"));
  EXPECT_EQ("the configuration\n", readFile(kConfigFile));
}

TEST_F(ArchiveTest, RestoreOfRubbish) {
  for (const char* rubbish : {"", "rubbish", "PK\3\4 and no more"}) {
    writeFile(std::string(kDocuments) + "/config-1.zip", rubbish);
    EXPECT_EQ(-1, loadSystemState(0, "--"));
    EXPECT_EQ("the configuration\n", readFile(kConfigFile));
  }
}

TEST_F(ArchiveTest, RestoreOfSomebodyElsesArchive) {
  ASSERT_EQ(0, system("cd /tmp && echo hello > hello && zip -q /usr/local/apache2/htdocs/config-1.zip hello"));
  EXPECT_EQ(-1, loadSystemState(0, "--"));
  EXPECT_EQ("the configuration\n", readFile(kConfigFile));
  EXPECT_EQ("root:x:0:0:root:/root:/bin/sh\n", readFile(kPasswd));
  EXPECT_EQ(0, events());
}

// zip -y keeps a link a link; unzip makes one of it again.
TEST_F(ArchiveTest, RestoreOfALinkInAnArchive) {
  writeFile("/tmp/elsewhere", "elsewhere");
  ASSERT_EQ(0,
            system("cd /tmp && echo stolen > kestrove.conf.configSaved && ln -s /tmp/elsewhere passwd.configSaved && "
                   "zip -qy /usr/local/apache2/htdocs/config-1.zip *.configSaved"));
  EXPECT_EQ(-1, loadSystemState(0, "--"));
  EXPECT_EQ("the configuration\n", readFile(kConfigFile));
  EXPECT_EQ("root:x:0:0:root:/root:/bin/sh\n", readFile(kPasswd));
}

TEST_F(ArchiveTest, NoRoomForTheArchive) {
  ASSERT_EQ(0, mount("none", kDocuments, "tmpfs", 0, "size=16k"));
  writeFile(std::string(kDocuments) + "/rest", std::string(12 * 1024, 'r'));
  writeFile(kConfigFile, std::string(100000, 'c'));
  saveSystemState(0, "--");
  EXPECT_EQ(0, shm_lock_count);
  EXPECT_EQ(std::string(100000, 'c'), readFile(kConfigFile));
  forgetFiles();
  writeFile(kConfigFile, "running\n");
  EXPECT_EQ(-1, loadSystemState(0, "--"));
  EXPECT_EQ("running\n", readFile(kConfigFile));
  umount2(kDocuments, MNT_DETACH);
}

TEST_F(ArchiveTest, ScriptThatDoesNotFitIsAFailure) {
  ASSERT_EQ(0, mount("none", kDocuments, "tmpfs", 0, "size=16k"));
  for (FilterRule& rule : shm->filterTable.rule) rule.ipVersion = 4;
  shm->filterTable.ruleCount = 8192;
  EXPECT_EQ(-1, __saveCliState("now"));
  EXPECT_THAT(namesIn(kDocuments), IsEmpty()) << "no part of it stays";
  umount2(kDocuments, MNT_DETACH);
}

TEST_F(ArchiveTest, LockIsHeldThroughoutTheSave) {
  // The archive's program asks in the middle of the save.
  Peer peer([](const Peer::Line& line) {
    line.hear();
    line.say(fileLockHeld() ? 'y' : 'n');
    return 0;
  });
  ASSERT_EQ(0, mkfifo("/tmp/begun", 0600));
  ASSERT_EQ(0, mkfifo("/tmp/go", 0600));
  writeFile("/tmp/bin-zip", "#!/bin/sh\necho > /tmp/begun\nread answer < /tmp/go\n");
  std::filesystem::permissions("/tmp/bin-zip", std::filesystem::perms::owner_all);
  ASSERT_EQ(0, mount("/tmp/bin-zip", "/usr/bin/zip", nullptr, MS_BIND, nullptr));
  Peer saver([](const Peer::Line&) { return saveSystemState(0, "--"); });
  readFile("/tmp/begun");
  peer.line().say('?');
  EXPECT_EQ('y', peer.line().hear());
  writeFile("/tmp/go", "\n");
  EXPECT_EQ(0, saver.join());
  umount2("/usr/bin/zip", MNT_DETACH);
}

}  // namespace
}  // namespace kestrove::testing
