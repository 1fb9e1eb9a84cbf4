// SPDX-License-Identifier: Apache-2.0
// Adding and removing users cut short: the password file is afterwards the old one or the new one, whole.

#include <errno.h>
#include <gmock/gmock.h>
#include <sys/wait.h>

#include "tests/support/fault.h"
#include "tests/users/users_fixture.h"

namespace kestrove::testing {
namespace {

class UsersFaultTest : public UsersTest {
 protected:
  void prepareForAdding() {
    writeFile(kPasswd, kSystemLines);
    unlink("/etc/.pwd.lock");
    fillWith({});
    shm->config.adminUserCount = 0;
    shm_errno = 0;
  }
  void prepareForRemoving() {
    writeFile(kPasswd, kSystemLines + lineOf("alice"));
    unlink("/etc/.pwd.lock");
    fillWith({accountNamed("alice", 1), accountNamed("bobby")});
    shm_errno = 0;
  }
  static int add() {
    UserAccount alice = accountNamed("alice", 1);
    return addUser(&alice, kGoodPassword);
  }
  static int remove() { return removeUser("alice"); }

  static bool oldFile() { return readFile(kPasswd) == kSystemLines; }
  static bool fileWithAlice() {
    std::string file = readFile(kPasswd);
    std::string last = file.substr(std::min(file.size(), strlen(kSystemLines)));
    return file.starts_with(kSystemLines) && last.starts_with("alice:$1$$") && last.ends_with("/serialUi.sh\n") &&
           std::count(last.begin(), last.end(), '\n') == 1;
  }
};

TEST_F(UsersFaultTest, AddingKilledAtAnyCall) {
  sweepFaults(
      {kKilled}, [this] { prepareForAdding(); }, add,
      [](const Strike&, const Aftermath&) {
        EXPECT_TRUE(oldFile() || fileWithAlice()) << readFile(kPasswd);
        // The table is first: no line without an account.
        EXPECT_TRUE(!fileWithAlice() || shm->config.userCount == 1);
        expectLockFree();
      });
}

TEST_F(UsersFaultTest, RemovingKilledAtAnyCall) {
  sweepFaults(
      {kKilled}, [this] { prepareForRemoving(); }, remove,
      [](const Strike&, const Aftermath&) {
        EXPECT_TRUE(oldFile() || fileWithAlice()) << readFile(kPasswd);
        EXPECT_TRUE(!oldFile() || shm->config.userCount == 1);
        expectLockFree();
      });
}

TEST_F(UsersFaultTest, AddingWithAFailingCall) {
  sweepFaults(
      {EIO, ENOSPC, EMFILE, EINTR}, [this] { prepareForAdding(); }, add,
      [](const Strike&, const Aftermath& after) {
        ASSERT_TRUE(after.finished);
        EXPECT_TRUE(oldFile() || fileWithAlice()) << readFile(kPasswd);
        EXPECT_LE(after.leaked, 0);
        expectLockFree();
        if (after.result == 0) {
          EXPECT_TRUE(fileWithAlice());
          EXPECT_EQ(1, shm->config.userCount);
        }
      });
}

TEST_F(UsersFaultTest, RemovingWithAFailingCall) {
  sweepFaults(
      {EIO, ENOSPC, EMFILE, EINTR}, [this] { prepareForRemoving(); }, remove,
      [](const Strike&, const Aftermath& after) {
        ASSERT_TRUE(after.finished);
        EXPECT_TRUE(oldFile() || fileWithAlice()) << readFile(kPasswd);
        EXPECT_LE(after.leaked, 0);
        expectLockFree();
        if (after.result == 1) {
          EXPECT_TRUE(oldFile());
          EXPECT_EQ(1, shm->config.userCount);
        }
      });
}

}  // namespace
}  // namespace kestrove::testing
