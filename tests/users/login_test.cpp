// SPDX-License-Identifier: Apache-2.0
// Log-in checks and reading accounts.

#include <gmock/gmock.h>
#include <stdlib.h>

#include "tests/support/syslog.h"
#include "tests/users/users_fixture.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;

class LoginTest : public UsersTest {
 protected:
  void SetUp() override {
    UsersTest::SetUp();
    writeFile(kPasswd, kSystemLines + lineOf("admin") + lineOf("adm") + lineOf("stranger"));
    fillWith({accountNamed("admin", 1), accountNamed("guest")});
    clearSyslog();
  }

  static void expectLogin(int result, unsigned code, const char* name, const char* password) {
    shm_errno = 99;
    EXPECT_EQ(result, authenticateUser(name, password)) << name;
    EXPECT_EQ(code, shm_errno) << name;
    EXPECT_EQ(0, shm_lock_count);
  }
};

TEST_F(LoginTest, RightPassword) {
  expectLogin(1, 0, "admin", kGoodPassword);
  EXPECT_THAT(syslogLines(), ElementsAre("debug: authenticateUser: found admin in shm"));
}

TEST_F(LoginTest, WrongPasswordIsLoggedWithBothHashes) {
  expectLogin(0, SHM_EPASSWORD, "admin", "x");
  EXPECT_THAT(syslogLines(), ElementsAre("debug: authenticateUser: found admin in shm",
                                         "debug: authenticateUser: wrong password: x $1$$LP5.V3ajGqHDdXW6XwZQy. " +
                                             std::string(kGoodHash)));
}

TEST_F(LoginTest, NoPasswordAsksOnlyWhetherTheUserExists) {
  expectLogin(1, 0, "admin", nullptr);
  expectLogin(1, 0, "admin", "");
}

TEST_F(LoginTest, NobodyInThePasswordDatabase) {
  expectLogin(0, SHM_ENOUSER, "guest", nullptr);
  EXPECT_THAT(syslogLines(), ElementsAre("debug: authenticateUser: getpwnam failed for guest"));
}

TEST_F(LoginTest, NobodyInTheTable) {
  expectLogin(0, SHM_ENOUSER, "stranger", kGoodPassword);
  EXPECT_THAT(syslogLines(), ElementsAre("debug: authenticateUser: no users in shm"));
}

TEST_F(LoginTest, NameThatAnAccountBeginsWith) {
  expectLogin(1, 0, "adm", kGoodPassword);
  expectLogin(0, SHM_EPASSWORD, "adm", "wrong");
}

TEST_F(LoginTest, AccountThatBeginsTheName) {
  writeFile(kPasswd, kSystemLines + lineOf("admin2"));
  expectLogin(0, SHM_ENOUSER, "admin2", nullptr);
}

TEST_F(LoginTest, AllFiveSlotsAreSearchedWhateverTheCountSays) {
  for (int32_t count : {0, -1, 5, 1000}) {
    shm->config.userCount = count;
    expectLogin(1, 0, "admin", kGoodPassword);
  }
  shm->config.users[4] = accountNamed("stranger");
  shm->config.userCount = 2;
  expectLogin(1, 0, "stranger", kGoodPassword);
}

TEST_F(LoginTest, PasswordThatCannotBeHashedIsWrong) {
  expectLogin(0, SHM_EPASSWORD, "admin", std::string(600, 'a').c_str());
}

TEST_F(LoginTest, LockedPasswordNeverMatches) {
  fillWith({accountNamed("daemon")});
  for (const char* password : {"*", "*0", "x"}) expectLogin(0, SHM_EPASSWORD, "daemon", password);
}

TEST_F(LoginTest, NameOfEveryByte) {
  for (int c = 1; c < 256; ++c) {
    std::string name(5, static_cast<char>(c));
    expectLogin(0, SHM_ENOUSER, name.c_str(), nullptr);
  }
  expectLogin(0, SHM_ENOUSER, "", nullptr);
  expectLogin(0, SHM_ENOUSER, std::string(10000, 'a').c_str(), nullptr);
}

TEST_F(LoginTest, UnterminatedNameInTheTable) {
  std::string full(32, 'n');
  shm->config.users[0] = accountNamed(full);
  memset(&shm->config.users[0].superUser, 'n', 4);
  writeFile(kPasswd, kSystemLines + lineOf(full) + lineOf(full + "n"));
  expectLogin(1, 0, full.c_str(), nullptr);
  expectLogin(0, SHM_ENOUSER, (full + "n").c_str(), nullptr);
}

TEST_F(LoginTest, GetUserAccountTakesTheLastOfTwo) {
  UserAccount second = accountNamed("admin", 7), out;
  fillWith({accountNamed("admin", 1), accountNamed("guest"), second});
  EXPECT_EQ(0, getUserAccount("admin", &out));
  EXPECT_EQ(7, out.superUser);
  EXPECT_EQ(0, getUserAccount("guest", &out));
  EXPECT_STREQ("guest", out.username);
}

TEST_F(LoginTest, GetUserAccountComparesExactlyAmongThoseInUse) {
  UserAccount out = accountNamed("kept");
  shm->config.users[3] = accountNamed("stale");
  for (const char* name : {"adm", "admin2", "", "stale", "Admin"}) EXPECT_FAILS_WITH(99, getUserAccount(name, &out));
  EXPECT_STREQ("kept", out.username);
}

TEST_F(LoginTest, GetUserTableEntryByIndex) {
  UserAccount out = accountNamed("kept");
  for (int index : {-1, 2, 5, INT32_MAX, INT32_MIN}) EXPECT_FAILS_WITH(SHM_EINVAL, getUserTableEntry(index, &out));
  EXPECT_STREQ("kept", out.username);
  EXPECT_EQ(0, getUserTableEntry(1, &out));
  EXPECT_STREQ("guest", out.username);
  shm->config.userCount = 1000;
  EXPECT_EQ(0, getUserTableEntry(4, &out));
  EXPECT_FAILS_WITH(SHM_EINVAL, getUserTableEntry(5, &out));
  shm->config.userCount = -1;
  EXPECT_FAILS_WITH(SHM_EINVAL, getUserTableEntry(0, &out));
}

TEST_F(LoginTest, GetCurrentUserByTheEnvironment) {
  UserAccount out;
  const UserAccount zero = {};
  setenv("USER", "guest", 1);
  EXPECT_EQ(0, getCurrentUser(&out));
  EXPECT_STREQ("guest", out.username);
  for (const char* name : {"gues", "guest2", ""}) {
    setenv("USER", name, 1);
    memset(&out, 0xEE, sizeof out);
    EXPECT_EQ(1, getCurrentUser(&out));
    EXPECT_EQ(0, memcmp(&zero, &out, sizeof out));
  }
  unsetenv("USER");
  memset(&out, 0xEE, sizeof out);
  EXPECT_EQ(1, getCurrentUser(&out));
  EXPECT_EQ(0, memcmp(&zero, &out, sizeof out));
}

TEST_F(LoginTest, GetCurrentUserTakesTheFirstOfTwo) {
  UserAccount out;
  fillWith({accountNamed("guest", 3), accountNamed("guest", 4)});
  setenv("USER", "guest", 1);
  EXPECT_EQ(0, getCurrentUser(&out));
  EXPECT_EQ(3, out.superUser);
}

TEST_F(LoginTest, GetUserPassword) {
  char hash[128] = "as it was";
  EXPECT_FAILS_WITH(99, getUserPassword("nobodyatall", hash));
  EXPECT_STREQ("as it was", hash);
  EXPECT_EQ(0, getUserPassword("admin", hash));
  EXPECT_STREQ(kGoodHash, hash);
  EXPECT_EQ(0, getUserPassword("root", hash));
  EXPECT_STREQ("x", hash);
  writeFile(kPasswd, "admin:" + std::string(10000, 'h') + ":1:1::/:/bin/sh\n");
  char guarded[129];
  memset(guarded, '!', sizeof guarded);
  EXPECT_EQ(0, getUserPassword("admin", guarded));
  EXPECT_EQ(127u, strlen(guarded));
  EXPECT_EQ('!', guarded[128]);
}

TEST_F(LoginTest, CountersAsTheyStand) {
  EXPECT_EQ(2, getUserCount());
  EXPECT_EQ(1, getAdminUserCount());
  shm->config.userCount = -7;
  shm->config.adminUserCount = 1000;
  EXPECT_EQ(-7, getUserCount());
  EXPECT_EQ(1000, getAdminUserCount());
}

TEST_F(LoginTest, NoTextIsAnInvalidArgument) {
  UserAccount out;
  char hash[128];
  EXPECT_FAILS_WITH(SHM_EINVAL, authenticateUser(nullptr, "x"));
  EXPECT_FAILS_WITH(SHM_EINVAL, getUserAccount(nullptr, &out));
  EXPECT_FAILS_WITH(SHM_EINVAL, getUserAccount("admin", nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getUserTableEntry(0, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getCurrentUser(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getUserPassword(nullptr, hash));
  EXPECT_FAILS_WITH(SHM_EINVAL, getUserPassword("admin", nullptr));
}

TEST_F(LoginTest, WithoutAStore) {
  dropStore();
  UserAccount out;
  char hash[128];
  EXPECT_FAILS_WITH(SHM_EATTACH, authenticateUser("admin", nullptr));
  EXPECT_FAILS_WITH(SHM_EATTACH, getUserAccount("admin", &out));
  EXPECT_FAILS_WITH(SHM_EATTACH, getUserTableEntry(0, &out));
  EXPECT_FAILS_WITH(SHM_EATTACH, getCurrentUser(&out));
  EXPECT_FAILS_WITH(SHM_EATTACH, getUserPassword("admin", hash));
  EXPECT_FAILS_WITH(SHM_EATTACH, getUserCount());
  EXPECT_FAILS_WITH(SHM_EATTACH, getAdminUserCount());
}

}  // namespace
}  // namespace kestrove::testing
