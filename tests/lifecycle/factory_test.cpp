// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "kestrove/kestrove.h"
#include "tests/support/files.h"
#include "tests/support/peer.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"

using namespace kestrove::testing;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

namespace {

constexpr char kMarker[] = "/var/etc/config/configured";
constexpr const char* kAgentFiles[] = {"/var/config/snmpd.conf", "/var/net-snmp/snmpd.conf"};

using Reset = int (*)(uint32_t, const char*);
constexpr Reset kBoth[] = {restoreFactoryDefaults, restoreZELFactoryDefaults};

void makeFolders() {
  for (const char* folder : {"/var/config", "/var/net-snmp", "/var/etc", "/var/etc/config"}) mkdir(folder, 0755);
}

void addAccount(const char* name) {
  UserAccount account = {};
  strcpy(account.username, name);
  account.superUser = 1;
  ASSERT_EQ(0, addUser(&account, "Secret-12"));
}

// An appliance in use: two accounts, files of the agent, a marker, a backup beside the configuration file.
class FactoryReset : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    makeFolders();
    shm->config.loggingOperState = SHM_ON;
    addAccount("first");
    addAccount("second");
    for (const char* path : kAgentFiles) writeFile(path, "agent");
    writeFile(kMarker, "");
    writeFile("/etc/config/kestrove.conf.bak", "LAN_MTU 1234\n");
    ASSERT_EQ(0, save_shared_memory());
    ASSERT_EQ(0, logEvent(2, 0, "--"));
    clearRecords();
  }
};

void expectFailure(Reset reset) {
  EXPECT_FAILS_WITH(SHM_ESYSTEM, reset(2, "op"));
  EXPECT_EQ(0, shm_lock_count);
  EXPECT_EQ(uint32_t{SHM_STATE_CONFIGURATION}, shm->operationalState);
}

TEST_F(FactoryReset, RemovesAccountsFilesAndMarker) {
  EXPECT_EQ(0, restoreFactoryDefaults(2, "op"));
  EXPECT_EQ(0, shm->config.userCount);
  EXPECT_THAT(readFile(kPasswd), Not(::testing::HasSubstr("first:")));
  for (const char* path : kAgentFiles) EXPECT_FALSE(fileExists(path));
  EXPECT_FALSE(fileExists(kMarker));
  EXPECT_FALSE(fileExists(kEventFile));
}

TEST_F(FactoryReset, BackupBecomesTheConfigurationFile) {
  EXPECT_EQ(0, restoreFactoryDefaults(2, "op"));
  EXPECT_EQ("LAN_MTU 1234\n", readFile(kConfigFile));
  EXPECT_THAT(shellLines(), Contains("cp /etc/config/kestrove.conf.bak /etc/config/kestrove.conf"));
}

TEST_F(FactoryReset, SuccessLeavesTheLockCounted) {
  for (Reset reset : kBoth) {
    shm_lock_count = 0;
    writeFile(kEventFile, "");
    writeFile(kConfigFile, "");
    EXPECT_EQ(0, reset(2, "op"));
    EXPECT_EQ(1, shm_lock_count);
  }
}

TEST_F(FactoryReset, SwitchesLoggingOffAndEntersConfigurationMode) {
  EXPECT_EQ(0, restoreFactoryDefaults(2, "op"));
  EXPECT_EQ(SHM_OFF, shm->config.loggingOperState);
  EXPECT_EQ(uint32_t{SHM_STATE_CONFIGURATION}, shm->operationalState);
  EXPECT_EQ(0, getEventCount());
}

TEST_F(FactoryReset, OtherResetKeepsAccountsAndMarker) {
  EXPECT_EQ(0, restoreZELFactoryDefaults(2, "op"));
  EXPECT_EQ(2, shm->config.userCount);
  EXPECT_THAT(readFile(kPasswd), ::testing::HasSubstr("first:"));
  EXPECT_TRUE(fileExists(kMarker));
  for (const char* path : kAgentFiles) EXPECT_FALSE(fileExists(path));
  EXPECT_FALSE(fileExists(kEventFile));
  EXPECT_EQ("LAN_MTU 1234\n", readFile(kConfigFile));
}

TEST_F(FactoryReset, MissingAgentFilesAndMarkerAreFine) {
  for (const char* path : kAgentFiles) unlink(path);
  unlink(kMarker);
  EXPECT_EQ(0, restoreFactoryDefaults(2, "op"));
}

TEST_F(FactoryReset, AgentFileThatCannotBeRemovedEndsIt) {
  for (Reset reset : kBoth) {
    for (const char* path : kAgentFiles) {
      unlink(path);
      ASSERT_EQ(0, mkdir(path, 0755));
      expectFailure(reset);
      EXPECT_TRUE(fileExists(kEventFile));
      EXPECT_TRUE(fileExists(kMarker));
      rmdir(path);
    }
  }
}

TEST_F(FactoryReset, MissingEventLogEndsIt) {
  strcpy(shm->config.eventLogFileName, "/tmp/none");
  for (Reset reset : kBoth) {
    expectFailure(reset);
    EXPECT_TRUE(fileExists(kConfigFile)) << "the log comes first";
  }
}

TEST_F(FactoryReset, MissingConfigurationFileEndsIt) {
  strcpy(shm->config.configFileName, "/none/kestrove.conf");
  for (Reset reset : kBoth) {
    writeFile(kEventFile, "");
    expectFailure(reset);
    EXPECT_FALSE(fileExists(kEventFile));
  }
  EXPECT_THAT(shellLines(), Not(Contains(::testing::StartsWith("cp "))));
}

TEST_F(FactoryReset, AccountThatCannotBeRemovedEndsIt) {
  ASSERT_EQ(0, mount(kPasswd, kPasswd, nullptr, MS_BIND, nullptr));
  ASSERT_EQ(0, mount(nullptr, kPasswd, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr));
  expectFailure(restoreFactoryDefaults);
  umount2(kPasswd, MNT_DETACH);
  for (const char* path : kAgentFiles) EXPECT_TRUE(fileExists(path));
}

TEST_F(FactoryReset, AccountsWithoutAPasswordLineAreNoHindrance) {
  UserAccount account = {};
  for (const char* name : {"third", "nobody-knows", "fifth"}) {
    strcpy(account.username, name);
    ASSERT_EQ(0, shm_addUser(&account));
  }
  EXPECT_EQ(0, restoreFactoryDefaults(2, "op"));
  EXPECT_EQ(0, shm->config.userCount);
  EXPECT_EQ(0, shm->config.adminUserCount);
  for (const UserAccount& user : shm->config.users) EXPECT_STREQ("", user.username);
  EXPECT_THAT(readFile(kPasswd), Not(::testing::HasSubstr("first:")));
}

TEST_F(FactoryReset, CountBeyondTheTableDoesNotKeepItBusy) {
  for (int32_t count : {6, 1000, INT32_MAX}) {
    shm->config.userCount = count;
    writeFile(kEventFile, "");
    writeFile(kConfigFile, "");
    EXPECT_EQ(0, restoreFactoryDefaults(2, "op"));
    EXPECT_EQ(0, shm->config.userCount);
    shm_lock_count = 0;
  }
}

TEST_F(FactoryReset, NegativeCountIsNoAccount) {
  shm->config.userCount = -1;
  EXPECT_EQ(0, restoreFactoryDefaults(2, "op"));
}

TEST_F(FactoryReset, FileNamesWithoutTerminatorAreBounded) {
  memset(shm->config.eventLogFileName, 'e', sizeof shm->config.eventLogFileName);
  expectFailure(restoreFactoryDefaults);
}

TEST_F(FactoryReset, PathThatIsNotPlainNeverReachesTheShell) {
  constexpr char kOdd[] = "/tmp/odd; touch run";
  writeFile(kOdd, "");
  strcpy(shm->config.configFileName, kOdd);
  EXPECT_EQ(0, restoreFactoryDefaults(2, "op"));
  EXPECT_EQ(1, shm_lock_count);
  EXPECT_FALSE(fileExists(kOdd));
  EXPECT_THAT(shellLines(), Not(Contains(::testing::StartsWith("cp "))));
}

TEST_F(FactoryReset, BackupThatIsMissingIsNoFailure) {
  unlink("/etc/config/kestrove.conf.bak");
  EXPECT_EQ(0, restoreFactoryDefaults(2, "op"));
  EXPECT_FALSE(fileExists(kConfigFile));
}

TEST(FactoryResetWithoutAStore, FailsWithTheLocksCode) {
  for (Reset reset : kBoth) {
    EXPECT_FAILS_WITH(SHM_EATTACH, reset(0, "--"));
    EXPECT_EQ(0, shm_lock_count);
  }
}

TEST_F(FactoryReset, RebuildDeletesTheStoreAndRunsBothPrograms) {
  answer("restartKestrove", "", 7);
  EXPECT_EQ(7, ZELrestore());
  EXPECT_EQ(nullptr, shm);
  EXPECT_EQ(-1, shmget(SHM_KEY, 1, 0));
  EXPECT_THAT(programs(), ElementsAre("/bin/shm-init", "/bin/restartKestrove"));
}

TEST(RebuildWithoutAStore, StillRunsBothPrograms) {
  EXPECT_EQ(0, ZELrestore());
  EXPECT_THAT(programs(), ElementsAre("/bin/shm-init", "/bin/restartKestrove"));
}

}  // namespace
