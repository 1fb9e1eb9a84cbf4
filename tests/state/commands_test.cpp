// SPDX-License-Identifier: Apache-2.0
// The commands of saving and restoring, whole and in order, and what their failures do.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/state/state_fixture.h"

namespace kestrove::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

#define HTDOCS "/usr/local/apache2/htdocs/"
constexpr char kMkdir[] = "mkdir " HTDOCS "state/ > /dev/null 2>&1";
constexpr char kEmpty[] = "rm -f " HTDOCS "state/* > /dev/null 2>&1";
constexpr char kSaveConfig[] =
    "cp /etc/config/kestrove.conf " HTDOCS "state/kestrove.conf.configSaved > /dev/null 2>&1";
constexpr char kSaveAgent[] = "cp /var/config/snmpd.conf " HTDOCS "state/snmpd.conf.configSaved > /dev/null 2>&1";
constexpr char kSaveAgentState[] =
    "cp /var/net-snmp/snmpd.conf " HTDOCS "state/varsnmpd.conf.configSaved > /dev/null 2>&1";
constexpr char kSavePasswd[] = "cp /etc/passwd " HTDOCS "state/passwd.configSaved > /dev/null 2>&1";
constexpr char kZip[] = "zip -j " HTDOCS "config-now.zip " HTDOCS "state/* > /dev/null 2>&1";
constexpr char kUnzip[] = "/usr/bin/unzip -o -qq " HTDOCS "config*.zip -d " HTDOCS "state/";
constexpr char kLoadConfig[] =
    "cp " HTDOCS "state/kestrove.conf.configSaved /etc/config/kestrove.conf > /dev/null 2>&1";
constexpr char kLoadAgent[] = "cp " HTDOCS "state/snmpd.conf.configSaved /var/config/snmpd.conf > /dev/null 2>&1";
constexpr char kLoadAgentState[] =
    "cp " HTDOCS "state/varsnmpd.conf.configSaved /var/net-snmp/snmpd.conf > /dev/null 2>&1";
constexpr char kLoadPasswd[] = "cp " HTDOCS "state/passwd.configSaved /etc/passwd > /dev/null 2>&1";

constexpr char kArchive[] = "/tmp/archive";
constexpr const char* kMembers[] = {"kestrove.conf", "snmpd.conf", "varsnmpd.conf", "passwd"};

std::string memberOf(const std::string& folder, const std::string& name) {
  return folder + "/" + name + ".configSaved";
}

class CommandsTest : public StateTest {
 protected:
  // What unzip brings, whole.
  static void fillArchive() {
    std::filesystem::create_directories(kArchive);
    for (const char* name : kMembers) writeFile(memberOf(kArchive, name), std::string("saved ") + name);
    perform("unzip", "/run/kestrove/real/cp -a /tmp/archive/*.configSaved " HTDOCS "state/");
  }
  static void leaveOut(const char* name) { std::filesystem::remove_all(memberOf(kArchive, name)); }
};

TEST_F(CommandsTest, ArchiveFromAllFiles) {
  EXPECT_EQ(0, __saveShmState("now", 3, "alice"));
  EXPECT_THAT(shellLines(),
              ElementsAre(kMkdir, kEmpty, kSaveConfig, kSaveAgent, kSaveAgentState, kSavePasswd, kZip, kEmpty));
  EXPECT_EQ(1, events());
  EXPECT_EQ(39u, lastEvent().eventId);
  EXPECT_EQ(3u, lastEvent().source);
  EXPECT_STREQ("alice", lastEvent().userName);
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(CommandsTest, WholeSaveDeletesThePreviousStateFirst) {
  EXPECT_EQ(0, saveSystemState(0, "--"));
  std::vector<std::string> lines = shellLines();
  ASSERT_EQ(10u, lines.size());
  EXPECT_EQ("rm -f " HTDOCS "config*.zip > /dev/null 2>&1", lines[0]);
  EXPECT_EQ("rm -f " HTDOCS "state*.txt > /dev/null 2>&1", lines[1]);
  EXPECT_EQ(kMkdir, lines[2]);
  EXPECT_THAT(lines[8], ::testing::MatchesRegex("zip -j " HTDOCS "config-[0-9]{8}-[0-9]{6}.zip " HTDOCS
                                                "state/\\* > /dev/null 2>&1"));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(CommandsTest, ZipThatFailsIsNotLookedAt) {
  answer("zip", "", 12);
  EXPECT_EQ(0, __saveShmState("now", 0, "--"));
  EXPECT_EQ(39u, lastEvent().eventId);
}

struct MissingRow {
  const char* path;
  const char* skipped;
};

TEST_F(CommandsTest, MissingAgentFilesAreNamedAndLeftOut) {
  for (const MissingRow& row : {MissingRow{kAgentFile, kSaveAgent}, {kAgentStateFile, kSaveAgentState}}) {
    SCOPED_TRACE(row.path);
    unlink(row.path);
    clearRecords();
    clearSyslog();
    EXPECT_EQ(0, __saveShmState("now", 0, "--"));
    EXPECT_THAT(shellLines(), Not(Contains(row.skipped)));
    EXPECT_THAT(syslogLines(), Contains(std::string("debug: ") + row.path + " missing"));
    writeFile(row.path, "back");
  }
}

TEST_F(CommandsTest, CopyThatIsNotThereEndsTheSave) {
  for (const char* path : {kConfigFile, kPasswd}) {
    SCOPED_TRACE(path);
    std::string text = readFile(path);
    unlink(path);
    clearRecords();
    clearSyslog();
    int before = events();
    EXPECT_EQ(-1, __saveShmState("now", 0, "--"));
    EXPECT_THAT(syslogLines(), Contains(std::string("debug: copying ") + path + " failed"));
    EXPECT_THAT(shellLines(), Not(Contains(kZip)));
    EXPECT_EQ(before, events());
    EXPECT_EQ(0, shm_lock_count);
    writeFile(path, text);
  }
}

TEST_F(CommandsTest, AgentFileThatCannotBeCopiedEndsTheSave) {
  for (const char* path : {kAgentFile, kAgentStateFile}) {
    unlink(path);
    std::filesystem::create_directory(path);  // cp refuses directories
    clearSyslog();
    EXPECT_EQ(-1, __saveShmState("now", 0, "--"));
    EXPECT_THAT(syslogLines(), Contains(std::string("debug: copying ") + path + " failed"));
    std::filesystem::remove(path);
    writeFile(path, "back");
  }
}

TEST_F(CommandsTest, BothHalvesAreTriedAndNamed) {
  unlink(kConfigFile);
  EXPECT_EQ(-1, saveSystemState(0, "--"));
  EXPECT_THAT(syslogLines(), Contains("debug: __saveShmState failed"));
  EXPECT_THAT(syslogLines(), Not(Contains("debug: __saveCliState failed")));
  EXPECT_EQ(1, std::count_if(std::filesystem::directory_iterator(kDocuments), {},
                             [](auto& entry) { return entry.path().extension() == ".txt"; }));
  writeFile(kConfigFile, "back");
  std::filesystem::remove_all(kDocuments);
  clearSyslog();
  clearRecords();
  EXPECT_EQ(-1, saveSystemState(0, "--"));
  EXPECT_THAT(syslogLines(), Contains("debug: __saveCliState failed"));
  EXPECT_THAT(shellLines(), Contains(kMkdir));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(CommandsTest, ConfigurationPathWithShellCharactersIsNotRun) {
  strcpy(shm->config.configFileName, "/etc/config/a;reboot");
  EXPECT_EQ(-1, __saveShmState("now", 0, "--"));
  EXPECT_THAT(shellLines(), ElementsAre(kMkdir, kEmpty));
  EXPECT_THAT(syslogLines(), Contains("debug: copying /etc/config/a;reboot failed"));
  fillArchive();
  clearRecords();
  EXPECT_EQ(-1, loadSystemState(0, "--"));
  EXPECT_THAT(shellLines(), ElementsAre(kMkdir, kUnzip));
  EXPECT_THAT(syslogLines(), Contains("err: Failed: cp " HTDOCS "state/kestrove.conf.configSaved "
                                      "/etc/config/a;reboot > /dev/null 2>&1"));
}

TEST_F(CommandsTest, ConfigurationPathWithoutATerminator) {
  memset(shm->config.configFileName, 'c', sizeof shm->config.configFileName);
  shm->config.configFileName[0] = '/';
  EXPECT_EQ(-1, __saveShmState("now", 0, "--"));
  EXPECT_THAT(syslogLines(), Contains("debug: copying /" + std::string(127, 'c') + " failed"));
}

TEST_F(CommandsTest, TimestampWithShellCharactersIsNotRun) {
  EXPECT_EQ(0, __saveShmState("now;reboot", 0, "--"));
  EXPECT_THAT(shellLines(), ElementsAre(kMkdir, kEmpty, kSaveConfig, kSaveAgent, kSaveAgentState, kSavePasswd, kEmpty));
}

TEST_F(CommandsTest, StagingIsPrivateBeforeTheFirstCommand) {
  umask(0);
  EXPECT_EQ(0, __saveShmState("now", 0, "--"));
  struct stat status;
  ASSERT_EQ(0, stat(kStaging, &status));
  EXPECT_EQ(0700u, status.st_mode & 07777);
  chmod(kStaging, 0777);
  fillArchive();
  EXPECT_EQ(0, loadSystemState(0, "--"));
  ASSERT_EQ(0, stat(kStaging, &status));
  EXPECT_EQ(0700u, status.st_mode & 07777);
  umask(022);
}

TEST_F(CommandsTest, RestoreOfAllFiles) {
  fillArchive();
  EXPECT_EQ(0, loadSystemState(2, "bob"));
  EXPECT_THAT(shellLines(), ElementsAre(kMkdir, kUnzip, kLoadConfig, kLoadAgent, kLoadAgentState, kLoadPasswd, kEmpty));
  EXPECT_THAT(syslogLines(), Contains(std::string("debug: ") + kUnzip));
  EXPECT_THAT(syslogLines(), Contains(std::string("debug: ") + kEmpty));
  EXPECT_THAT(syslogLines(), Not(Contains(HasSubstr("Failed"))));
  EXPECT_EQ("saved kestrove.conf", readFile(kConfigFile));
  EXPECT_EQ("saved snmpd.conf", readFile(kAgentFile));
  EXPECT_EQ("saved varsnmpd.conf", readFile(kAgentStateFile));
  EXPECT_EQ("saved passwd", readFile(kPasswd));
  EXPECT_EQ(1, events());
  EXPECT_EQ(40u, lastEvent().eventId);
  EXPECT_EQ(2u, lastEvent().source);
  EXPECT_STREQ("bob", lastEvent().userName);
  EXPECT_THAT(namesIn(kStaging), IsEmpty());
}

TEST_F(CommandsTest, RestoreWithoutAnArchive) {
  fillArchive();
  answer("unzip", "", 9);
  shm_errno = 99;
  EXPECT_EQ(-1, loadSystemState(0, "--"));
  EXPECT_EQ(99u, shm_errno);
  EXPECT_THAT(shellLines(), ElementsAre(kMkdir, kUnzip));
  EXPECT_THAT(syslogLines(), ElementsAre(std::string("err: Failed: ") + kUnzip));
  EXPECT_EQ(0, events());
}

TEST_F(CommandsTest, ArchiveWithoutConfigurationOrPasswordsIsRefusedInSilence) {
  fillArchive();
  leaveOut("kestrove.conf");
  EXPECT_EQ(-1, loadSystemState(0, "--"));
  EXPECT_THAT(shellLines(), ElementsAre(kMkdir, kUnzip));
  EXPECT_THAT(syslogLines(), ElementsAre(std::string("debug: ") + kUnzip));
  fillArchive();
  leaveOut("passwd");
  clearRecords();
  clearSyslog();
  EXPECT_EQ(-1, loadSystemState(0, "--"));
  EXPECT_THAT(shellLines(), ElementsAre(kMkdir, kUnzip, kLoadConfig, kLoadAgent, kLoadAgentState));
  EXPECT_THAT(syslogLines(), ElementsAre(std::string("debug: ") + kUnzip));
  EXPECT_EQ(0, events());
}

TEST_F(CommandsTest, ArchiveWithoutAgentFiles) {
  fillArchive();
  leaveOut("snmpd.conf");
  leaveOut("varsnmpd.conf");
  EXPECT_EQ(0, loadSystemState(0, "--"));
  EXPECT_THAT(shellLines(), ElementsAre(kMkdir, kUnzip, kLoadConfig, kLoadPasswd, kEmpty));
  EXPECT_THAT(syslogLines(), Contains(std::string("debug: ") + kAgentFile + " missing"));
  EXPECT_THAT(syslogLines(), Contains(std::string("debug: ") + kAgentStateFile + " missing"));
}

struct BackRow {
  const char* path;
  const char* command;
};

TEST_F(CommandsTest, RestoreStopsAtTheFirstFailedCopy) {
  const BackRow rows[] = {
      {kConfigFile, kLoadConfig}, {kAgentFile, kLoadAgent}, {kAgentStateFile, kLoadAgentState}, {kPasswd, kLoadPasswd}};
  for (const BackRow& row : rows) {
    SCOPED_TRACE(row.path);
    fillArchive();
    std::filesystem::rename(row.path, std::string(row.path) + ".away");
    // A folder with a folder in it of the copy's name takes no copy.
    std::string inside = row.command;
    inside = inside.substr(3, inside.find(' ', 3) - 3);
    std::filesystem::create_directories(row.path + inside.substr(inside.rfind('/')));
    clearRecords();
    clearSyslog();
    EXPECT_EQ(-1, loadSystemState(0, "--"));
    EXPECT_EQ(row.command, shellLines().back());
    EXPECT_EQ(std::string("err: Failed: ") + row.command, syslogLines().back());
    EXPECT_EQ(0, events());
    std::filesystem::remove_all(row.path);
    std::filesystem::rename(std::string(row.path) + ".away", row.path);
  }
}

TEST_F(CommandsTest, StagingThatCannotBeEmptiedIsNamedAndIgnored) {
  fillArchive();
  std::filesystem::create_directories(std::string(kStaging) + "/folder");
  EXPECT_EQ(0, loadSystemState(0, "--"));
  std::vector<std::string> log = syslogLines();
  EXPECT_THAT(log, Contains(std::string("err: Failed: ") + kEmpty));
  EXPECT_THAT(log, Contains(std::string("debug: ") + kEmpty));
  EXPECT_EQ(40u, lastEvent().eventId);
}

TEST_F(CommandsTest, MemberThatIsNoRegularFileIsRefusedBeforeAnythingIsCopied) {
  writeFile("/tmp/elsewhere", "elsewhere");
  for (const char* name : kMembers) {
    for (bool folder : {false, true}) {
      SCOPED_TRACE(name);
      fillArchive();
      leaveOut(name);
      if (folder) {
        std::filesystem::create_directory(memberOf(kArchive, name));
      } else {
        std::filesystem::create_symlink("/tmp/elsewhere", memberOf(kArchive, name));
      }
      clearRecords();
      clearSyslog();
      EXPECT_EQ(-1, loadSystemState(0, "--"));
      EXPECT_THAT(shellLines(), ElementsAre(kMkdir, kUnzip));
      EXPECT_EQ("err: " + memberOf(kStaging, name) + " is no regular file", syslogLines().back());
      EXPECT_EQ("the configuration\n", readFile(kConfigFile));
      EXPECT_EQ(0, events());
      leaveOut(name);
      std::filesystem::remove_all(kStaging);
    }
  }
}

TEST_F(CommandsTest, OldCopiesThatTheArchiveDidNotBringAreNotRestored) {
  for (const char* name : {"snmpd.conf", "varsnmpd.conf"}) {
    std::filesystem::create_directories(kStaging);
    writeFile(memberOf(kStaging, name), "stale");
    fillArchive();
    leaveOut(name);
    EXPECT_EQ(0, loadSystemState(0, "--"));
  }
  EXPECT_NE("stale", readFile(kAgentFile));
  EXPECT_NE("stale", readFile(kAgentStateFile));
  for (const char* name : {"kestrove.conf", "passwd"}) {
    writeFile(memberOf(kStaging, name), "stale");
    fillArchive();
    leaveOut(name);
    EXPECT_EQ(-1, loadSystemState(0, "--"));
  }
  EXPECT_NE("stale", readFile(kConfigFile));
  EXPECT_NE("stale", readFile(kPasswd));
}

TEST_F(CommandsTest, OldCopyThatCannotBeRemovedEndsTheRestore) {
  std::filesystem::create_directories(memberOf(kStaging, "passwd"));
  fillArchive();
  EXPECT_EQ(-1, loadSystemState(0, "--"));
  EXPECT_THAT(shellLines(), ElementsAre(kMkdir));
  EXPECT_THAT(syslogLines(),
              ElementsAre("err: " + memberOf(kStaging, "passwd") + " cannot be removed: Is a directory"));
}

// A link would lead the copies, password hashes among them, elsewhere, and give that place another mode.
TEST_F(CommandsTest, StagingFolderThatIsALinkIsNotUsed) {
  fillArchive();
  for (const char* target : {"/tmp/target", "/tmp/nothing"}) {
    std::filesystem::create_directories("/tmp/target");
    chmod("/tmp/target", 0755);
    std::filesystem::remove_all(kStaging);
    std::filesystem::create_symlink(target, kStaging);
    clearRecords();
    clearSyslog();
    EXPECT_EQ(-1, loadSystemState(0, "--"));
    EXPECT_EQ(-1, __saveShmState("now", 0, "--"));
    EXPECT_THAT(shellLines(), IsEmpty());
    EXPECT_THAT(syslogLines(), Contains(HasSubstr("err: " HTDOCS "state cannot be used: ")).Times(2));
    EXPECT_THAT(namesIn("/tmp/target"), IsEmpty());
    struct stat status;
    ASSERT_EQ(0, stat("/tmp/target", &status));
    EXPECT_EQ(0755u, status.st_mode & 07777);
  }
}

TEST_F(CommandsTest, RestoreTakesNoLockAndAttaches) {
  fillArchive();
  ShmData* attached = shm;
  shm = nullptr;
  EXPECT_EQ(0, loadSystemState(0, "--"));
  EXPECT_NE(nullptr, shm);
  shm = attached;
}

TEST_F(CommandsTest, TimestampAndUserOfTheStore) {
  strcpy(shm->config.sysName, "now");
  ASSERT_EQ(0, logEvent(24, 3, "administrator"));
  shm->eventLog.writeIndex = 0;
  EXPECT_EQ(0, __saveShmState(shm->config.sysName, 0, shm->eventLog.record[0].userName + 3));
  EXPECT_THAT(shellLines(), Contains(kZip));
  EXPECT_STREQ("inistrator", shm->eventLog.record[0].userName);
  EXPECT_EQ(0, saveSystemState(0, shm->eventLog.record[0].userName));
  fillArchive();
  EXPECT_EQ(0, loadSystemState(0, shm->eventLog.record[0].userName));
  for (int i = 1; i < 3; ++i) EXPECT_STREQ("inistrator", shm->eventLog.record[i].userName);
}

TEST_F(CommandsTest, NoTimestamp) {
  EXPECT_FAILS_WITH(SHM_EINVAL, __saveShmState(nullptr, 0, "--"));
  EXPECT_THAT(shellLines(), IsEmpty());
}

TEST_F(CommandsTest, WithoutAStore) {
  dropStore();
  EXPECT_FAILS_WITH(SHM_EATTACH, saveSystemState(0, "--"));
  EXPECT_FAILS_WITH(SHM_EATTACH, __saveShmState("now", 0, "--"));
  EXPECT_FAILS_WITH(SHM_EATTACH, loadSystemState(0, "--"));
  EXPECT_THAT(shellLines(), IsEmpty());
}

}  // namespace
}  // namespace kestrove::testing
