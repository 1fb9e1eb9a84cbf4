// SPDX-License-Identifier: Apache-2.0
// Adding and removing users.

#include <gmock/gmock.h>
#include <pwd.h>
#include <sys/stat.h>

#include "tests/support/syslog.h"
#include "tests/users/users_fixture.h"

namespace kestrove::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;

class ManageTest : public UsersTest {};

TEST_F(ManageTest, AddedUserIsInTableAndPasswordFile) {
  UserAccount alice = accountNamed("alice", 1);
  alice.lastLoginSeconds = 12;
  alice.lastLoginMicroseconds = 34;
  alice.lastPasswdChange = -5;
  EXPECT_EQ(0, addUser(&alice, kGoodPassword));
  EXPECT_EQ(1, getUserCount());
  EXPECT_EQ(1, getAdminUserCount());
  EXPECT_EQ(0, memcmp(&alice, &shm->config.users[0], sizeof alice));
  std::string file = readFile(kPasswd);
  ASSERT_EQ(0u, file.find(kSystemLines));
  EXPECT_THAT(file.substr(strlen(kSystemLines)),
              MatchesRegex("alice:\\$1\\$\\$MJvR0jmujVNw4WBw8xcUk/:[0-9]+:0::/root:/usr/bin/serialUi.sh\n"));
  EXPECT_NE(0u, getpwnam("alice")->pw_uid);
  EXPECT_TRUE(saved());
  EXPECT_EQ(1, authenticateUser("alice", kGoodPassword));
}

TEST_F(ManageTest, OnlySuperUserOneIsAnAdministrator) {
  int admins = 0;
  for (int32_t superUser : {0, 2, -1, 1}) {
    UserAccount account = accountNamed("user" + std::to_string(superUser + 10), superUser);
    EXPECT_EQ(0, addUser(&account, nullptr));
    EXPECT_EQ(admins += superUser == 1, getAdminUserCount());
  }
}

TEST_F(ManageTest, WithoutAPasswordTheTableAlone) {
  UserAccount alice = accountNamed("alice");
  EXPECT_EQ(0, addUser(&alice, nullptr));
  EXPECT_EQ(kSystemLines, readFile(kPasswd));
  EXPECT_EQ(1, getUserCount());
}

struct NameRow {
  std::string name;
  int code;
};

TEST_F(ManageTest, NamesOfFiveTo31LettersAndDigits) {
  const NameRow rows[] = {{"alice", 0},
                          {"Alice0", 0},
                          {"00000", 0},
                          {std::string(31, 'z'), 0},
                          {"alic", SHM_ERANGE},
                          {"", SHM_ERANGE},
                          {std::string(32, 'z'), SHM_ERANGE},
                          {"user_1", SHM_EINVAL},
                          {"al_", SHM_EINVAL},
                          {"alice ", SHM_EINVAL},
                          {"a:lice", SHM_EINVAL},
                          {std::string(31, 'z') + "!", SHM_EINVAL}};
  for (const NameRow& row : rows) {
    fillWith({});
    UserAccount account = accountNamed(row.name);
    if (row.code == 0) {
      EXPECT_EQ(0, addUser(&account, nullptr)) << row.name;
    } else {
      EXPECT_FAILS_WITH(row.code, addUser(&account, nullptr));
    }
    EXPECT_EQ(row.code == 0 ? 1 : 0, getUserCount()) << row.name;
  }
}

TEST_F(ManageTest, EveryByteInAName) {
  std::string accepted;
  for (int c = 1; c < 256; ++c) {
    fillWith({});
    UserAccount account = accountNamed("user" + std::string(1, static_cast<char>(c)));
    if (addUser(&account, nullptr) == 0) accepted += static_cast<char>(c);
  }
  EXPECT_EQ("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", accepted);
}

TEST_F(ManageTest, SixthUserIsRefused) {
  fillWith({accountNamed("user1"), accountNamed("user2"), accountNamed("user3"), accountNamed("user4"),
            accountNamed("user5")});
  UserAccount sixth = accountNamed("user6");
  EXPECT_FAILS_WITH(SHM_EFULL, addUser(&sixth, kGoodPassword));
  EXPECT_FAILS_WITH(SHM_EFULL, shm_addUser(&sixth));
  EXPECT_EQ(kSystemLines, readFile(kPasswd));
  EXPECT_EQ(5, getUserCount());
}

TEST_F(ManageTest, UserWhoExistsIsRefused) {
  UserAccount alice = accountNamed("alice");
  ASSERT_EQ(0, addUser(&alice, kGoodPassword));
  std::string file = readFile(kPasswd);
  EXPECT_FAILS_WITH(SHM_EEXIST, addUser(&alice, kGoodPassword));
  EXPECT_FAILS_WITH(SHM_EEXIST, shm_addUser(&alice));
  EXPECT_EQ(1, getUserCount());
  EXPECT_EQ(file, readFile(kPasswd));
}

TEST_F(ManageTest, ShmAddUserChecksNoName) {
  UserAccount odd = accountNamed("a_b");
  EXPECT_EQ(0, shm_addUser(&odd));
  odd = accountNamed(std::string(32, '!'));
  EXPECT_EQ(0, shm_addUser(&odd));
  EXPECT_EQ(2, getUserCount());
  EXPECT_EQ(kSystemLines, readFile(kPasswd));
}

struct BadPasswordRow {
  const char* password;
  int code;
};
constexpr BadPasswordRow kBadPasswords[] = {
    {"", SHM_ERANGE}, {"Pass1!", SHM_ERANGE}, {"password1!", SHM_EINVAL}, {"Password11", SHM_EINVAL}};

TEST_F(ManageTest, BadPasswordUndoesTheAccount) {
  UserAccount first = accountNamed("first", 1), alice = accountNamed("alice", 1);
  ASSERT_EQ(0, addUser(&first, kGoodPassword));
  std::string file = readFile(kPasswd);
  for (const BadPasswordRow& row : kBadPasswords) {
    EXPECT_FAILS_WITH(row.code, addUser(&alice, row.password));
    EXPECT_EQ(1, getUserCount());
    EXPECT_EQ(1, getAdminUserCount());
    EXPECT_THAT(slots(), ElementsAre("first", "", "", "", ""));
    EXPECT_EQ(file, readFile(kPasswd));
    EXPECT_EQ(std::string::npos, readFile(kConfigFile).find("alice"));
    EXPECT_EQ(0, shm_lock_count);
  }
}

TEST_F(ManageTest, UndoingTakesTheNewAccountOffNotAnOlderOneOfThatName) {
  UserAccount older = accountNamed("alice", 1), newer = accountNamed("alice", 0);
  ASSERT_EQ(0, addUser(&older, nullptr));
  EXPECT_FAILS_WITH(SHM_ERANGE, addUser(&newer, "short"));
  EXPECT_EQ(1, getUserCount());
  EXPECT_EQ(1, shm->config.users[0].superUser);
  EXPECT_EQ(1, getAdminUserCount());
}

TEST_F(ManageTest, UndoingLeavesTheMachinesOwnLineOfThatName) {
  const std::string file = std::string(kSystemLines) + "nobody:*:65534:65534::/:/bin/false\n";
  writeFile(kPasswd, file);
  UserAccount nobody = accountNamed("nobody");
  EXPECT_FAILS_WITH(SHM_ERANGE, addUser(&nobody, "weak"));
  EXPECT_EQ(file, readFile(kPasswd));
  EXPECT_EQ(0, getUserCount());
  EXPECT_EQ(std::string::npos, readFile(kConfigFile).find("nobody"));
}

TEST_F(ManageTest, AccountOfTheTableItselfIsAnAccountLikeAnother) {
  fillWith({accountNamed("alice", 1), accountNamed("bobby")});
  EXPECT_EQ(0, addUser(&shm->config.users[0], nullptr));  // not in the password database: no account exists
  shm->config.users[4] = accountNamed("carol", 1);
  EXPECT_EQ(0, shm_addUser(&shm->config.users[4]));
  EXPECT_THAT(slots(), ElementsAre("alice", "bobby", "alice", "carol", "carol"));
  EXPECT_EQ(3, getAdminUserCount());
  EXPECT_FAILS_WITH(SHM_ERANGE, addUser(&shm->config.users[1], "weak"));
  EXPECT_THAT(slots(), ElementsAre("alice", "bobby", "alice", "carol", ""));
}

TEST_F(ManageTest, TextsOfTheStoreAsNameAndPassword) {
  fillWith({accountNamed("alice")});
  strcpy(shm->oldAdminPassword, kGoodPassword);
  EXPECT_EQ(0, addPassword(shm->config.users[0].username, shm->oldAdminPassword));
  EXPECT_EQ(1, authenticateUser(shm->config.users[0].username, shm->oldAdminPassword));
  EXPECT_FAILS_WITH(SHM_EPASSWORD, validatePasswordComplexity(shm->oldAdminPassword, shm->oldAdminPassword));
  EXPECT_EQ(0, encryptPasswd(shm->oldAdminPassword, shm->config.sysName));
  EXPECT_STREQ(kGoodHash, shm->config.sysName);
  EXPECT_EQ(0, getUserPassword(shm->config.users[0].username, shm->config.sysLocation));
  EXPECT_STREQ(kGoodHash, shm->config.sysLocation);
  fillWith({accountNamed("alice", 1), accountNamed("bobby")});
  EXPECT_EQ(0, getUserAccount(shm->config.users[1].username, &shm->config.users[0]));
  EXPECT_THAT(slots(), ElementsAre("bobby", "bobby", "", "", ""));
  EXPECT_EQ(0, getUserTableEntry(1, &shm->config.users[1]));
  EXPECT_THAT(slots(), ElementsAre("bobby", "bobby", "", "", ""));
  setenv("USER", "bobby", 1);
  EXPECT_EQ(0, getCurrentUser(&shm->config.users[2]));
  EXPECT_THAT(slots(), ElementsAre("bobby", "bobby", "bobby", "", ""));
}

TEST_F(ManageTest, UnwritablePasswordFileUndoesTheAccount) {
  unlink(kPasswd);
  mkdir(kPasswd, 0755);
  UserAccount alice = accountNamed("alice", 1);
  EXPECT_FAILS_WITH(SHM_EOPEN, addUser(&alice, kGoodPassword));
  EXPECT_EQ(0, getUserCount());
  EXPECT_EQ(0, getAdminUserCount());
  rmdir(kPasswd);
}

TEST_F(ManageTest, AddPasswordLooksAtNoTable) {
  EXPECT_EQ(0, addPassword("x", "y"));
  EXPECT_THAT(readFile(kPasswd), ::testing::HasSubstr("\nx:$1$$"));
  EXPECT_EQ(0, getUserCount());
  EXPECT_FALSE(saved());
}

TEST_F(ManageTest, UserNumbersAreFreeOnes) {
  for (int i = 0; i < 20; ++i) EXPECT_EQ(0, addPassword(("user" + std::to_string(i)).c_str(), "p"));
  std::vector<uid_t> numbers;
  for (int i = 0; i < 20; ++i) numbers.push_back(getpwnam(("user" + std::to_string(i)).c_str())->pw_uid);
  std::sort(numbers.begin(), numbers.end());
  EXPECT_EQ(numbers.end(), std::unique(numbers.begin(), numbers.end()));
  EXPECT_NE(0u, numbers[0]);
}

TEST_F(ManageTest, RemovedUserIsGoneFromBoth) {
  UserAccount alice = accountNamed("alice", 1), bobby = accountNamed("bobby");
  ASSERT_EQ(0, addUser(&alice, kGoodPassword));
  std::string withoutBobby = readFile(kPasswd);
  ASSERT_EQ(0, addUser(&bobby, kGoodPassword));
  saved();
  EXPECT_EQ(1, removeUser("bobby"));
  EXPECT_EQ(withoutBobby, readFile(kPasswd));
  EXPECT_TRUE(saved());
  EXPECT_EQ(1, removeUser("alice"));
  EXPECT_EQ(kSystemLines, readFile(kPasswd));
  EXPECT_EQ(0, getUserCount());
  EXPECT_EQ(0, getAdminUserCount());
  EXPECT_EQ(0, removeUser("alice"));
  EXPECT_EQ(unsigned(SHM_ENOUSER), shm_errno);
  EXPECT_EQ(0, shm_lock_count);
}

class RemoveTest : public UsersTest {
 protected:
  void SetUp() override {
    UsersTest::SetUp();
    std::string file = kSystemLines;
    for (const char* name : {"user1", "user2", "user3", "user4", "user5"}) file += lineOf(name);
    writeFile(kPasswd, file);
  }
};

TEST_F(RemoveTest, GapIsClosed) {
  fillWith({accountNamed("user1"), accountNamed("user2", 1), accountNamed("user3"), accountNamed("user4")});
  EXPECT_EQ(1, removeUser("user2"));
  EXPECT_THAT(slots(), ElementsAre("user1", "user3", "user4", "", ""));
  EXPECT_EQ(3, getUserCount());
  EXPECT_EQ(0, getAdminUserCount());
}

// The name moves away under the caller's pointer while the account is removed.
TEST_F(RemoveTest, NameInTheTableRemovesThatUserAlone) {
  fillWith({accountNamed("user1"), accountNamed("user2"), accountNamed("user3")});
  EXPECT_EQ(1, removeUser(shm->config.users[0].username));
  EXPECT_THAT(slots(), ElementsAre("user2", "user3", "", "", ""));
  EXPECT_EQ(kSystemLines + lineOf("user2") + lineOf("user3") + lineOf("user4") + lineOf("user5"), readFile(kPasswd));
  EXPECT_EQ(1, removeUser(shm->config.users[1].username));
  EXPECT_EQ(kSystemLines + lineOf("user2") + lineOf("user4") + lineOf("user5"), readFile(kPasswd));
}

TEST_F(RemoveTest, SlotJustPastTheUsersMovesDown) {
  fillWith({accountNamed("user1"), accountNamed("user2")});
  shm->config.users[2] = accountNamed("stale");
  EXPECT_EQ(1, removeUser("user1"));
  EXPECT_THAT(slots(), ElementsAre("user2", "stale", "stale", "", ""));
  EXPECT_EQ(1, getUserCount());
}

TEST_F(RemoveTest, PastAFullTableThereIsAnEmptySlot) {
  const uint32_t restarts = shm->config.kestroveRestartCount = 0xABCDABCD;
  memset(shm->config.reserved11, 0x77, sizeof shm->config.reserved11);
  fillWith({accountNamed("user1"), accountNamed("user2"), accountNamed("user3"), accountNamed("user4"),
            accountNamed("user5")});
  EXPECT_EQ(1, removeUser("user1"));
  EXPECT_THAT(slots(), ElementsAre("user2", "user3", "user4", "user5", ""));
  const UserAccount zero = {};
  EXPECT_EQ(0, memcmp(&zero, &shm->config.users[4], sizeof zero));
  EXPECT_EQ(0x77, shm->config.reserved11[0]);
  EXPECT_EQ(restarts, shm->config.kestroveRestartCount);
}

TEST_F(RemoveTest, AdministratorsAreNeverLessThanNone) {
  fillWith({accountNamed("user1", 1)});
  for (int32_t count : {0, -3}) {
    fillWith({accountNamed("user1", 1)});
    writeFile(kPasswd, lineOf("user1"));
    shm->config.adminUserCount = count;
    EXPECT_EQ(1, removeUser("user1"));
    EXPECT_EQ(0, getAdminUserCount());
  }
}

TEST_F(RemoveTest, PrefixOfAnAccountIsNoUser) {
  writeFile(kPasswd, kSystemLines + lineOf("user"));
  std::string file = readFile(kPasswd);
  fillWith({accountNamed("user1")});
  shm_errno = 99;
  EXPECT_EQ(0, removeUser("user"));
  EXPECT_EQ(unsigned(SHM_ENOUSER), shm_errno);
  EXPECT_EQ(file, readFile(kPasswd));
  EXPECT_EQ(1, getUserCount());
  EXPECT_FALSE(saved());
}

TEST_F(RemoveTest, NobodyInTheDatabaseStaysInTheTable) {
  fillWith({accountNamed("ghost")});
  shm_errno = 99;
  EXPECT_EQ(0, removeUser("ghost"));
  EXPECT_EQ(unsigned(SHM_ENOUSER), shm_errno);
  EXPECT_EQ(1, getUserCount());
  EXPECT_FALSE(saved());
}

TEST_F(RemoveTest, AccountBehindThoseInUse) {
  fillWith({accountNamed("user1")});
  shm->config.users[3] = accountNamed("user4", 1);
  shm->config.adminUserCount = 1;
  EXPECT_EQ(1, removeUser("user4"));
  EXPECT_EQ(1, getUserCount());
  EXPECT_EQ(1, getAdminUserCount());
  EXPECT_THAT(slots(), ElementsAre("user1", "", "", "", ""));
}

TEST_F(RemoveTest, DamagedCounts) {
  for (int32_t count : {INT32_MAX, 6, -1, INT32_MIN}) {
    writeFile(kPasswd, kSystemLines + lineOf("user1"));
    fillWith({accountNamed("user1"), accountNamed("user2")});
    shm->config.userCount = count;
    shm->config.adminUserCount = count;
    EXPECT_EQ(1, removeUser("user1"));
    EXPECT_EQ(count > 0 ? 4 : count, getUserCount());
    UserAccount account = accountNamed("user9", 1);
    EXPECT_EQ(count > 0 ? 0 : -1, shm_addUser(&account));
  }
}

TEST_F(RemoveTest, ConfigurationModeSavesNothingTheRestIsDone) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  UserAccount alice = accountNamed("alice");
  EXPECT_EQ(0, addUser(&alice, kGoodPassword));
  EXPECT_EQ(1, removeUser("alice"));
  EXPECT_FALSE(saved());
  shm->operationalState = SHM_STATE_DEBUG;
  EXPECT_EQ(0, addUser(&alice, kGoodPassword));
  EXPECT_TRUE(saved());
  EXPECT_EQ(1, removeUser("alice"));
  EXPECT_TRUE(saved());
}

TEST_F(RemoveTest, FailedSaveChangesNoResult) {
  strcpy(shm->config.configFileName, "/no/such/folder/file");
  UserAccount alice = accountNamed("alice");
  shm_errno = 0;
  EXPECT_EQ(0, addUser(&alice, kGoodPassword));
  EXPECT_EQ(uint32_t{SHM_ESYSTEM}, shm_errno) << "tells that the file is not there";
  shm_errno = 0;
  EXPECT_EQ(1, removeUser("alice"));
  EXPECT_EQ(uint32_t{SHM_ESYSTEM}, shm_errno);
}

TEST_F(RemoveTest, NoTextIsAnInvalidArgument) {
  EXPECT_FAILS_WITH(SHM_EINVAL, addUser(nullptr, kGoodPassword));
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_addUser(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, addPassword(nullptr, kGoodPassword));
  EXPECT_FAILS_WITH(SHM_EINVAL, addPassword("alice", nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, removeUser(nullptr));
  EXPECT_EQ(0, getUserCount());
}

TEST_F(RemoveTest, WithoutAStore) {
  std::string file = readFile(kPasswd);
  dropStore();
  UserAccount alice = accountNamed("alice"), odd = accountNamed("a");
  EXPECT_FAILS_WITH(SHM_EATTACH, addUser(&alice, kGoodPassword));
  EXPECT_FAILS_WITH(SHM_ERANGE, addUser(&odd, kGoodPassword));  // the name comes before the lock
  EXPECT_FAILS_WITH(SHM_EATTACH, shm_addUser(&alice));
  EXPECT_FAILS_WITH(SHM_EATTACH, addPassword("alice", kGoodPassword));
  EXPECT_FAILS_WITH(SHM_EATTACH, removeUser("user1"));
  EXPECT_EQ(file, readFile(kPasswd));
}

}  // namespace
}  // namespace kestrove::testing
