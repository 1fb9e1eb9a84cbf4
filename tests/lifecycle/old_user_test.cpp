// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "kestrove/kestrove.h"
#include "tests/support/files.h"
#include "tests/support/memory.h"
#include "tests/support/store.h"

using namespace kestrove::testing;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

class OldUser : public StoreTest {
 protected:
  void name(const char* user, const char* password) {
    strcpy(shm->oldAdminUsername, user);
    strcpy(shm->oldAdminPassword, password);
  }
};

constexpr char kKeys[] =
    "ADMIN_USERNAME            boss\n"
    "ADMIN_PASSWORD            Secret-12\n";

TEST_F(OldUser, BecomesAnAdministratorWithThatPassword) {
  name("boss", "Secret-12");
  EXPECT_EQ(0, addOldUser());
  ASSERT_EQ(1, shm->config.userCount);
  UserAccount expected = {};
  strcpy(expected.username, "boss");
  expected.superUser = 1;
  EXPECT_EQ(0, memcmp(&expected, &shm->config.users[0], sizeof expected));
  EXPECT_EQ(1, shm->config.adminUserCount);
  EXPECT_EQ(1, authenticateUser("boss", "Secret-12"));
  EXPECT_THAT(readFile(kConfigFile), Not(HasSubstr("ADMIN_PASSWORD")));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(OldUser, NeedsBothKeys) {
  name("boss", "");
  EXPECT_EQ(0, addOldUser());
  name("", "Secret-12");
  EXPECT_EQ(0, addOldUser());
  EXPECT_EQ(0, shm->config.userCount);
  EXPECT_FALSE(fileExists(kConfigFile));
}

TEST_F(OldUser, FieldsWithoutTerminatorAreBounded) {
  memset(shm->oldAdminUsername, 'u', sizeof shm->oldAdminUsername);
  memset(shm->oldAdminPassword, 'p', sizeof shm->oldAdminPassword);
  addOldUser();
  EXPECT_EQ(std::string(31, 'u'), std::string(shm->config.users[0].username, 32).c_str());
}

TEST_F(OldUser, FullTableKeepsTheKeysForTheNextStart) {
  shm->config.userCount = SHM_USERS;
  for (int i = 0; i < SHM_USERS; ++i) snprintf(shm->config.users[i].username, 32, "user%d", i);
  name("boss", "Secret-12");
  EXPECT_FAILS_WITH(SHM_EFULL, addOldUser());
  EXPECT_EQ(SHM_USERS, shm->config.userCount);
  EXPECT_THAT(readFile(kConfigFile), EndsWith(kKeys));
}

TEST_F(OldUser, PasswordThatCannotBeAddedTakesTheAccountBack) {
  // Nothing can be appended to a folder.
  ASSERT_EQ(0, rename(kPasswd, "/etc/passwd.away"));
  ASSERT_EQ(0, mkdir(kPasswd, 0755));
  name("boss", "Secret-12");
  shm_errno = 99;
  EXPECT_GT(0, addOldUser());
  EXPECT_NE(99u, shm_errno);
  rmdir(kPasswd);
  rename("/etc/passwd.away", kPasswd);
  EXPECT_EQ(0, shm->config.userCount);
  EXPECT_THAT(readFile(kConfigFile), EndsWith(kKeys));
}

TEST_F(OldUser, AccountOfThatNameIsRemovedForTheNextStart) {
  UserAccount account = {};
  strcpy(account.username, "bossy");
  ASSERT_EQ(0, addUser(&account, "Other-Secret-1"));
  name("bossy", "Secret-12");
  EXPECT_FAILS_WITH(SHM_EEXIST, addOldUser());
  EXPECT_EQ(0, shm->config.userCount);
  EXPECT_THAT(readFile(kPasswd), Not(HasSubstr("bossy:")));
  EXPECT_EQ(0, addOldUser());
  EXPECT_EQ(1, authenticateUser("bossy", "Secret-12"));
}

TEST_F(OldUser, KeysGoToTheFixedFileWhateverTheStoresOwnIs) {
  strcpy(shm->config.configFileName, "/etc/config/other.conf");
  shm->config.userCount = SHM_USERS;
  name("boss", "Secret-12");
  EXPECT_EQ(-1, addOldUser());
  EXPECT_EQ(kKeys, readFile(kConfigFile));
  EXPECT_THAT(readFile("/etc/config/other.conf"), Not(HasSubstr("ADMIN_")));
}

TEST_F(OldUser, KeysStandOnLinesOfTheirOwnBehindAnUnfinishedOne) {
  shm->config.userCount = SHM_USERS;
  name("boss", "Secret-12");
  for (const char* text : {"", "LAN_MTU 1500\n"}) {
    writeFile(kConfigFile, text);
    EXPECT_EQ(-1, addOldUser());
    EXPECT_EQ(std::string(text) + kKeys, readFile(kConfigFile));
  }
  writeFile(kConfigFile, "LAN_MTU 1500");
  EXPECT_EQ(-1, addOldUser());
  EXPECT_EQ(std::string("LAN_MTU 1500\n") + kKeys, readFile(kConfigFile));
}

TEST_F(OldUser, KeysWithALineFeedAreWrittenUpToIt) {
  shm->config.userCount = SHM_USERS;
  name("boss\nSSHD 1", "Secret-12\nSSHD 1");
  EXPECT_EQ(-1, addOldUser());
  EXPECT_EQ(kKeys, readFile(kConfigFile));
}

TEST_F(OldUser, MachinesOwnLineOfThatNameStays) {
  std::string file = readFile(kPasswd);
  writeFile(kPasswd, file + "boss:x:7:7::/:/bin/false\n");
  ASSERT_EQ(0, mount(kPasswd, kPasswd, nullptr, MS_BIND, nullptr));
  ASSERT_EQ(0, mount(nullptr, kPasswd, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr));
  name("boss", "Secret-12");
  EXPECT_FAILS_WITH(SHM_EOPEN, addOldUser());
  umount2(kPasswd, MNT_DETACH);
  EXPECT_EQ(0, shm->config.userCount);
  EXPECT_EQ(file + "boss:x:7:7::/:/bin/false\n", readFile(kPasswd));
}

// Written past every buffer of this process.
constexpr char kZebraKeys[] = "ADMIN_USERNAME boss\nADMIN_PASSWORD Zebra7?stripes\n";

void writeZebraKeys() {
  int file = open("/tmp/keys.conf", O_WRONLY | O_CREAT | O_TRUNC, 0600);
  ASSERT_EQ(static_cast<ssize_t>(strlen(kZebraKeys)), write(file, kZebraKeys, strlen(kZebraKeys)));
  close(file);
}

TEST_F(OldUser, PasswordStaysNowhereOnceTheAccountExists) {
  writeZebraKeys();
  ASSERT_EQ(0, load_shared_memory("/tmp/keys.conf"));
  EXPECT_EQ(1, occurrences('Z', "ebra7?stripes")) << "in the store alone";
  EXPECT_EQ(0, addOldUser());
  EXPECT_EQ(0, occurrences('Z', "ebra7?stripes"));
  EXPECT_EQ(1, shm->config.userCount);
  EXPECT_EQ(0, addOldUser()) << "nothing is left to be moved";
  EXPECT_EQ(1, shm->config.userCount);
}

TEST_F(OldUser, PasswordStaysInTheStoreAloneUntilTheAccountExists) {
  writeZebraKeys();
  ASSERT_EQ(0, load_shared_memory("/tmp/keys.conf"));
  shm->config.userCount = SHM_USERS;
  EXPECT_EQ(-1, addOldUser());
  EXPECT_EQ(1, occurrences('Z', "ebra7?stripes"));
  shm->config.userCount = 0;
  EXPECT_EQ(0, addOldUser());
  EXPECT_EQ(0, occurrences('Z', "ebra7?stripes"));
}

TEST_F(OldUser, FileThatCannotBeAppendedToIsLeft) {
  ASSERT_EQ(0, mkdir(kConfigFile, 0755));
  shm->config.userCount = SHM_USERS;
  name("boss", "Secret-12");
  EXPECT_FAILS_WITH(SHM_EFULL, addOldUser());
}

TEST(OldUserWithoutAStore, FailsWithTheLocksCode) { EXPECT_FAILS_WITH(SHM_EATTACH, addOldUser()); }

}  // namespace
