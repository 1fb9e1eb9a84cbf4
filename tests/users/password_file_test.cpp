// SPDX-License-Identifier: Apache-2.0
// The password file: which lines stay, and files that are no proper ones.

#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <shadow.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include "tests/support/peer.h"
#include "tests/support/syslog.h"
#include "tests/users/users_fixture.h"

namespace kestrove::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kOnlyBobby[] = "bobby:$1$$MJvR0jmujVNw4WBw8xcUk/:0:0::/root:/usr/bin/serialUi.sh\n";
constexpr size_t kMebibyte = 1024 * 1024;

struct stat statusOf(const char* path) {
  struct stat status = {};
  stat(path, &status);
  return status;
}

class PasswordFileTest : public UsersTest {
 protected:
  void SetUp() override {
    UsersTest::SetUp();
    fillWith({accountNamed("alice")});
    clearSyslog();
  }
  void TearDown() override {
    umount2(kPasswd, MNT_DETACH);
    rmdir(kPasswd);
    UsersTest::TearDown();
  }

  // What the file is after the removal of alice, whose line is in it.
  static std::string afterRemoval(const std::string& file) {
    writeFile(kPasswd, file);
    fillWith({accountNamed("alice")});
    EXPECT_EQ(1, removeUser("alice"));
    return readFile(kPasswd);
  }
};

TEST_F(PasswordFileTest, EveryLineOfTheNameGoesAllOthersStay) {
  const std::string others =
      "alic:x:1:1::/:/bin/sh\n"
      "alice2:x:1:1::/:/bin/sh\n"
      "Alice:x:1:1::/:/bin/sh\n"
      " alice:x:1:1::/:/bin/sh\n"
      "alice\n"
      "no colon at all\n"
      "\n"
      ":alice:1:1::/:/bin/sh\n";
  EXPECT_EQ(others, afterRemoval(lineOf("alice") + others + lineOf("alice") + "alice:\n"));
}

TEST_F(PasswordFileTest, UnfinishedLastLineIsLostWithAWarning) {
  EXPECT_EQ("first\n", afterRemoval("first\n" + lineOf("alice") + "bobby:x:1:1::/:/bin/sh"));
  EXPECT_THAT(syslogLines(), Contains("warning: removeUser: the unfinished last line of the password file is lost"));
}

TEST_F(PasswordFileTest, UnfinishedLineOfTheNameIsNoLoss) {
  EXPECT_EQ("first\n", afterRemoval("first\nalice:x:1:1::/:/bin/sh"));
  EXPECT_THAT(syslogLines(), Not(Contains(HasSubstr("warning"))));
}

TEST_F(PasswordFileTest, LongLinesStayWhole) {
  std::string longLine = "bobby:" + std::string(10000, 'b') + "\nalice-in-a-line:" + std::string(510, 'c') + "\n";
  longLine += std::string(505, 'd') + "alice:x\n";  // a piece of it would look like alice's
  longLine += std::string("e\0f:\0\n", 6);
  EXPECT_EQ(longLine, afterRemoval(longLine + lineOf("alice")));
  EXPECT_EQ(longLine, afterRemoval(longLine + "alice:" + std::string(10000, 'x') + ":1:1::/:/bin/sh\n"));
}

TEST_F(PasswordFileTest, WhatStaysMayTakeAMebibyte) {
  std::string full(kMebibyte - 1, 'x');
  full += '\n';
  EXPECT_EQ(full.size(), afterRemoval(lineOf("alice") + full).size());
}

TEST_F(PasswordFileTest, MoreThanAMebibyteIsLeftUntouched) {
  for (size_t size : {kMebibyte + 1, 10 * kMebibyte}) {
    std::string file = lineOf("alice") + std::string(size - 1, 'x') + "\n";
    writeFile(kPasswd, file);
    fillWith({accountNamed("alice"), accountNamed("bobby")});
    EXPECT_FAILS_WITH(SHM_EOPEN, removeUser("alice"));
    EXPECT_EQ(file, readFile(kPasswd));
    EXPECT_EQ(1, getUserCount());
    EXPECT_EQ("bobby", slots()[0]);
    EXPECT_FALSE(saved());
    EXPECT_EQ(0, shm_lock_count);
  }
}

TEST_F(PasswordFileTest, BigFileStillTakesALine) {
  std::string file;
  for (int i = 0; file.size() < 10 * kMebibyte; ++i) file += "user" + std::to_string(i) + ":x:9:9::/:/bin/false\n";
  writeFile(kPasswd, file);
  UserAccount zoe = accountNamed("zoe12");
  EXPECT_EQ(0, addUser(&zoe, kGoodPassword));
  EXPECT_EQ(file, readFile(kPasswd).substr(0, file.size()));
  EXPECT_EQ(1, authenticateUser("zoe12", kGoodPassword));
}

TEST_F(PasswordFileTest, OwnerAndModeAreKept) {
  writeFile(kPasswd, kSystemLines + lineOf("alice"));
  ASSERT_EQ(0, chmod(kPasswd, 0604));
  ASSERT_EQ(0, chown(kPasswd, 12, 34));
  EXPECT_EQ(1, removeUser("alice"));
  struct stat status = statusOf(kPasswd);
  EXPECT_EQ(0604u, status.st_mode & 07777);
  EXPECT_EQ(12u, status.st_uid);
  EXPECT_EQ(34u, status.st_gid);
  chown(kPasswd, 0, 0);
}

TEST_F(PasswordFileTest, FileIsReplacedNotRewritten) {
  writeFile(kPasswd, kSystemLines + lineOf("alice"));
  int old = open(kPasswd, O_RDONLY);
  EXPECT_EQ(1, removeUser("alice"));
  EXPECT_EQ(strlen(kSystemLines) + lineOf("alice").size(), static_cast<size_t>(lseek(old, 0, SEEK_END)));
  close(old);
}

TEST_F(PasswordFileTest, MissingFile) {
  unlink(kPasswd);
  EXPECT_EQ(0, removeUser("alice"));
  EXPECT_EQ(unsigned(SHM_ENOUSER), shm_errno);
  EXPECT_FALSE(fileExists(kPasswd));
  UserAccount bobby = accountNamed("bobby");
  EXPECT_EQ(0, addUser(&bobby, kGoodPassword));
  EXPECT_EQ(kOnlyBobby, readFile(kPasswd));
}

TEST_F(PasswordFileTest, EmptyFile) {
  writeFile(kPasswd, "");
  EXPECT_EQ(0, removeUser("alice"));
  EXPECT_EQ(0, addPassword("bobby", kGoodPassword));
  EXPECT_EQ(kOnlyBobby, readFile(kPasswd));
}

TEST_F(PasswordFileTest, FileWithoutColons) {
  writeFile(kPasswd, "one\ntwo\n");
  EXPECT_EQ(0, removeUser("alice"));
  EXPECT_EQ(0, addPassword("alice", kGoodPassword));
  EXPECT_EQ(1, removeUser("alice"));
  EXPECT_EQ("one\ntwo\n", readFile(kPasswd));
}

TEST_F(PasswordFileTest, NewLineStandsByItselfBehindAnUnfinishedOne) {
  writeFile(kPasswd, "root:x:0:0:root:/root:/bin/bash");
  EXPECT_EQ(0, addPassword("alice", kGoodPassword));
  EXPECT_THAT(readFile(kPasswd), ::testing::StartsWith("root:x:0:0:root:/root:/bin/bash\nalice:$1$$"));
}

TEST_F(PasswordFileTest, Directory) {
  unlink(kPasswd);
  ASSERT_EQ(0, mkdir(kPasswd, 0755));
  EXPECT_FAILS_WITH(SHM_EOPEN, addPassword("bobby", kGoodPassword));
  EXPECT_EQ(0, removeUser("alice"));
}

TEST_F(PasswordFileTest, ReadOnlyFile) {
  writeFile(kPasswd, kSystemLines + lineOf("alice"));
  ASSERT_EQ(0, mount(kPasswd, kPasswd, nullptr, MS_BIND, nullptr));
  ASSERT_EQ(0, mount(nullptr, kPasswd, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr));
  EXPECT_FAILS_WITH(SHM_EOPEN, addPassword("bobby", kGoodPassword));
  EXPECT_FAILS_WITH(SHM_EOPEN, removeUser("alice"));
  EXPECT_EQ(0, getUserCount());
  EXPECT_FALSE(saved());
  EXPECT_EQ(kSystemLines + lineOf("alice"), readFile(kPasswd));
}

TEST_F(PasswordFileTest, ReasonOfAFailureOutlivesItsUndoing) {
  ASSERT_EQ(0, mount(kPasswd, kPasswd, nullptr, MS_BIND, nullptr));
  ASSERT_EQ(0, mount(nullptr, kPasswd, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr));
  UserAccount bobby = accountNamed("bobby");
  errno = 0;
  EXPECT_FAILS_WITH(SHM_EOPEN, addUser(&bobby, kGoodPassword));
  EXPECT_EQ(EROFS, errno);
}

TEST_F(PasswordFileTest, MountedFileIsWrittenInPlace) {
  writeFile("/tmp/passwd", kSystemLines + lineOf("alice"));
  ASSERT_EQ(0, mount("/tmp/passwd", kPasswd, nullptr, MS_BIND, nullptr));
  EXPECT_EQ(1, removeUser("alice"));
  EXPECT_EQ(kSystemLines, readFile("/tmp/passwd"));
}

TEST_F(PasswordFileTest, LockThatCannotBeTakenIsAWarning) {
  unlink("/etc/.pwd.lock");
  ASSERT_EQ(0, mkdir("/etc/.pwd.lock", 0700));
  writeFile(kPasswd, kSystemLines + lineOf("alice"));
  EXPECT_EQ(1, removeUser("alice"));
  EXPECT_EQ(0, addPassword("bobby", kGoodPassword));
  EXPECT_THAT(syslogLines(), Contains(HasSubstr("warning: /etc/passwd cannot be locked: ")).Times(2));
  rmdir("/etc/.pwd.lock");
}

// As the system's own tools take it, for longer than anybody waits.
class SystemTool {
 public:
  SystemTool()
      : peer_([](const Peer::Line& line) {
          line.say(lckpwdf() == 0 ? 'y' : 'n');
          return line.hear();
        }) {
    EXPECT_EQ('y', peer_.line().hear());
  }

 private:
  Peer peer_;
};

TEST_F(PasswordFileTest, LockOfTheSystemsToolsIsAskedForAMomentOnlyAndKeepsTheCallersAlarm) {
  writeFile(kPasswd, kSystemLines + lineOf("alice"));
  SystemTool tool;
  alarm(1000);
  time_t begun = time(nullptr);
  EXPECT_EQ(1, removeUser("alice"));
  EXPECT_EQ(0, addPassword("bobby", kGoodPassword));
  EXPECT_LE(time(nullptr), begun + 3);
  EXPECT_GT(alarm(0), 900u);
  EXPECT_THAT(syslogLines(), Contains(HasSubstr("warning: /etc/passwd cannot be locked: ")).Times(2));
}

TEST_F(PasswordFileTest, LockOfTheSystemsToolsIsWaitedForWhenItIsGivenBackSoon) {
  Peer tool([](const Peer::Line& line) {
    line.say(lckpwdf() == 0 ? 'y' : 'n');
    usleep(300000);
    return ulckpwdf();
  });
  ASSERT_EQ('y', tool.line().hear());
  EXPECT_EQ(0, addPassword("bobby", kGoodPassword));
  EXPECT_EQ(0, tool.join());
  EXPECT_THAT(syslogLines(), Not(Contains(HasSubstr("cannot be locked"))));
}

TEST_F(PasswordFileTest, LockIsGivenBack) {
  EXPECT_EQ(0, addPassword("bobby", kGoodPassword));
  fillWith({accountNamed("bobby")});
  EXPECT_EQ(1, removeUser("bobby"));
  struct flock request = {};
  request.l_type = F_WRLCK;
  int file = open("/etc/.pwd.lock", O_RDWR);
  ASSERT_GE(file, 0);
  EXPECT_EQ(0, fcntl(file, F_GETLK, &request));
  EXPECT_EQ(F_UNLCK, request.l_type);
  close(file);
}

TEST_F(PasswordFileTest, NameThatAPasswordLineCannotHold) {
  for (const char* name : {"a:b", "a\nb"}) EXPECT_FAILS_WITH(SHM_EOPEN, addPassword(name, kGoodPassword));
  EXPECT_EQ(kSystemLines, readFile(kPasswd));
}

TEST_F(PasswordFileTest, FullDiskLeavesNoPartOfALine) {
  ASSERT_EQ(0, mkdir("/tmp/small", 0755));
  ASSERT_EQ(0, mount("none", "/tmp/small", "tmpfs", 0, "size=8k"));
  std::string file(4090, 'x');
  file += "\n";
  writeFile("/tmp/small/passwd", file);
  writeFile("/tmp/small/rest", std::string(4096, 'r'));
  ASSERT_EQ(0, mount("/tmp/small/passwd", kPasswd, nullptr, MS_BIND, nullptr));
  EXPECT_FAILS_WITH(SHM_EOPEN, addPassword("bobby", kGoodPassword));
  EXPECT_EQ(file, readFile(kPasswd));
  umount2(kPasswd, MNT_DETACH);
  umount2("/tmp/small", MNT_DETACH);
  rmdir("/tmp/small");
}

}  // namespace
}  // namespace kestrove::testing
