// SPDX-License-Identifier: Apache-2.0
// When each account logged in last.
#include <string.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include "tests/support/files.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

// The suite has the name that it had beside system control, so that results compare from release to release.
class ProcessTest : public StoreTest {};

void addAccounts() {
  ConfigRecord& config = shm->config;
  config.userCount = 3;
  strcpy(config.users[0].username, "root");
  strcpy(config.users[1].username, "admin");
  strcpy(config.users[2].username, "adele");
  for (int i = 0; i < 5; ++i) config.users[i].lastLoginSeconds = 1000 + i;
}

TEST_F(ProcessTest, ReadingALogInWantsTheWholeName) {
  addAccounts();
  EXPECT_EQ(1001, getLastLoginTimeStamp("admin"));
  EXPECT_EQ(1002, getLastLoginTimeStamp("adele"));
  for (const char* name : {"ad", "admin1", "", "Admin"}) EXPECT_FAILS_WITH(SHM_ENOUSER, getLastLoginTimeStamp(name));
  EXPECT_FAILS_WITH(SHM_EINVAL, getLastLoginTimeStamp(nullptr));
}

TEST_F(ProcessTest, StampingALogInTakesTheFirstNameThatBeginsSo) {
  addAccounts();
  timeval before, after;
  gettimeofday(&before, nullptr);
  EXPECT_EQ(0, setLastLoginTimeStamp("ad"));
  gettimeofday(&after, nullptr);
  const UserAccount& admin = shm->config.users[1];
  EXPECT_GE(admin.lastLoginSeconds, before.tv_sec);
  EXPECT_LE(admin.lastLoginSeconds, after.tv_sec);
  EXPECT_GE(admin.lastLoginMicroseconds, 0);
  EXPECT_LT(admin.lastLoginMicroseconds, 1000000);
  EXPECT_EQ(1000, shm->config.users[0].lastLoginSeconds);
  EXPECT_EQ(1002, shm->config.users[2].lastLoginSeconds);
  EXPECT_TRUE(fileExists(kConfigFile));
  unlink(kConfigFile);
  EXPECT_FAILS_WITH(SHM_ENOUSER, setLastLoginTimeStamp("admins"));
  EXPECT_FAILS_WITH(SHM_ENOUSER, setLastLoginTimeStamp("x"));
  EXPECT_FAILS_WITH(SHM_EINVAL, setLastLoginTimeStamp(nullptr));
  EXPECT_FALSE(fileExists(kConfigFile));
  EXPECT_EQ(0, setLastLoginTimeStamp(""));  // begins every name
  EXPECT_NE(1000, shm->config.users[0].lastLoginSeconds);
}

TEST_F(ProcessTest, AFailedSaveDoesNotFailTheStamp) {
  addAccounts();
  ASSERT_EQ(0, mkdir(kConfigFile, 0755));
  shm_errno = 0;
  EXPECT_EQ(0, setLastLoginTimeStamp("admin"));
  EXPECT_EQ(uint32_t(SHM_ESYSTEM), shm_errno);
  EXPECT_NE(1001, shm->config.users[1].lastLoginSeconds);
}

TEST_F(ProcessTest, DamagedAccountsEndTheWalk) {
  for (UserAccount& account : shm->config.users) memset(account.username, 'u', sizeof account.username);
  std::string full(32, 'u'), longer(33, 'u');
  for (int32_t count : {5, 6, INT32_MAX}) {
    shm->config.userCount = count;
    EXPECT_FAILS_WITH(SHM_ENOUSER, getLastLoginTimeStamp("nobody"));
    EXPECT_FAILS_WITH(SHM_ENOUSER, getLastLoginTimeStamp(longer.c_str()));
    EXPECT_FAILS_WITH(SHM_ENOUSER, setLastLoginTimeStamp(longer.c_str()));
    EXPECT_EQ(0, getLastLoginTimeStamp(full.c_str()));
  }
  for (int32_t count : {0, -1, INT32_MIN}) {
    shm->config.userCount = count;
    EXPECT_FAILS_WITH(SHM_ENOUSER, getLastLoginTimeStamp(full.c_str()));
  }
}

}  // namespace
}  // namespace kestrove::testing
