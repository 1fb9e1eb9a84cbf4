#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "kestrove/kestrove.h"
#include "tests/support/store.h"

using namespace kestrove::testing;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

constexpr char kConfig[] = "/etc/config/kestrove.conf";

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
  EXPECT_THAT(readFile(kConfig), Not(HasSubstr("ADMIN_PASSWORD")));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(OldUser, NeedsBothKeys) {
  name("boss", "");
  EXPECT_EQ(0, addOldUser());
  name("", "Secret-12");
  EXPECT_EQ(0, addOldUser());
  EXPECT_EQ(0, shm->config.userCount);
  EXPECT_FALSE(fileExists(kConfig));
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
  EXPECT_THAT(readFile(kConfig), EndsWith(kKeys));
}

TEST_F(OldUser, PasswordThatCannotBeAddedTakesTheAccountBack) {
  // Nothing can be appended to a folder.
  ASSERT_EQ(0, rename("/etc/passwd", "/etc/passwd.away"));
  ASSERT_EQ(0, mkdir("/etc/passwd", 0755));
  name("boss", "Secret-12");
  shm_errno = 99;
  EXPECT_GT(0, addOldUser());
  EXPECT_NE(99u, shm_errno);
  rmdir("/etc/passwd");
  rename("/etc/passwd.away", "/etc/passwd");
  EXPECT_EQ(0, shm->config.userCount);
  EXPECT_THAT(readFile(kConfig), EndsWith(kKeys));
}

TEST_F(OldUser, AccountOfThatNameIsRemovedForTheNextStart) {
  UserAccount account = {};
  strcpy(account.username, "bossy");
  ASSERT_EQ(0, addUser(&account, "Other-Secret-1"));
  name("bossy", "Secret-12");
  EXPECT_FAILS_WITH(SHM_EEXIST, addOldUser());
  EXPECT_EQ(0, shm->config.userCount);
  EXPECT_THAT(readFile("/etc/passwd"), Not(HasSubstr("bossy:")));
  EXPECT_EQ(0, addOldUser());
  EXPECT_EQ(1, authenticateUser("bossy", "Secret-12"));
}

TEST_F(OldUser, KeysGoToTheFixedFileWhateverTheStoresOwnIs) {
  strcpy(shm->config.configFileName, "/etc/config/other.conf");
  shm->config.userCount = SHM_USERS;
  name("boss", "Secret-12");
  EXPECT_EQ(-1, addOldUser());
  EXPECT_EQ(kKeys, readFile(kConfig));
  EXPECT_THAT(readFile("/etc/config/other.conf"), Not(HasSubstr("ADMIN_")));
}

TEST_F(OldUser, FileThatCannotBeAppendedToIsLeft) {
  ASSERT_EQ(0, mkdir(kConfig, 0755));
  shm->config.userCount = SHM_USERS;
  name("boss", "Secret-12");
  EXPECT_FAILS_WITH(SHM_EFULL, addOldUser());
}

TEST(OldUserWithoutAStore, FailsWithTheLocksCode) { EXPECT_FAILS_WITH(SHM_EATTACH, addOldUser()); }

}  // namespace
