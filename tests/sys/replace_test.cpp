// SPDX-License-Identifier: Apache-2.0
// Replacing files of every kind.
#include "sys/replace.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <set>

#include "tests/support/peer.h"
#include "tests/support/store.h"

namespace kestrove::sys {
namespace {

using testing::readFile;
using testing::writeFile;

constexpr char kFolder[] = "/tmp/replace";
constexpr char kFile[] = "/tmp/replace/file";

std::set<std::string> namesIn(const char* folder) {
  std::set<std::string> names;
  DIR* directory = opendir(folder);
  while (const dirent* entry = readdir(directory)) names.insert(entry->d_name);
  closedir(directory);
  names.erase(".");
  names.erase("..");
  return names;
}

struct stat statusOf(const char* path) {
  struct stat status = {};
  EXPECT_EQ(0, lstat(path, &status)) << path;
  return status;
}

bool replace(const char* path, const std::string& text) {
  Replacement file(path);
  return file && file.write(text.data(), text.size()) && file.commit();
}

const std::string kOld = "the old contents, which are the longer ones\n";
const std::string kNew = "the new contents\n";

class ReplaceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(0, mkdir(kFolder, 0755));
    writeFile(kFile, kOld);
  }
  void TearDown() override { EXPECT_EQ(names_, namesIn(kFolder)); }
  std::set<std::string> names_ = {"file"};  // what there must be in the end
};

TEST_F(ReplaceTest, OldContentsStandUntilTheCommit) {
  Replacement file(kFile);
  ASSERT_TRUE(file);
  ASSERT_TRUE(file.write(kNew.data(), kNew.size()));
  EXPECT_EQ(kOld, readFile(kFile));
  ASSERT_TRUE(file.commit());
  EXPECT_EQ(kNew, readFile(kFile));
}

TEST_F(ReplaceTest, OldContentsStandWithoutACommit) {
  {
    Replacement file(kFile);
    ASSERT_TRUE(file.write(kNew.data(), kNew.size()));
  }
  EXPECT_EQ(kOld, readFile(kFile));
}

TEST_F(ReplaceTest, OpenReaderKeepsTheOldContents) {
  std::ifstream reader(kFile);
  ASSERT_TRUE(replace(kFile, kNew));
  std::string line;
  std::getline(reader, line);
  EXPECT_EQ(kOld, line + "\n");
}

TEST_F(ReplaceTest, OwnerAndModeAreKept) {
  ASSERT_EQ(0, chown(kFile, 12, 34));
  ASSERT_EQ(0, chmod(kFile, 02640));
  ASSERT_TRUE(replace(kFile, kNew));
  EXPECT_EQ(12u, statusOf(kFile).st_uid);
  EXPECT_EQ(34u, statusOf(kFile).st_gid);
  EXPECT_EQ(0102640u, statusOf(kFile).st_mode);
}

TEST_F(ReplaceTest, NewFileFollowsTheMask) {
  unlink(kFile);
  umask(027);
  ASSERT_TRUE(replace(kFile, kNew));
  EXPECT_EQ(kNew, readFile(kFile));
  EXPECT_EQ(0100640u, statusOf(kFile).st_mode);
}

TEST_F(ReplaceTest, NewFileWithoutACommitIsNotThere) {
  unlink(kFile);
  {
    Replacement file(kFile);
    ASSERT_TRUE(file.write(kNew.data(), kNew.size()));
  }
  names_ = {};
}

TEST_F(ReplaceTest, EmptyContentsAreContents) {
  ASSERT_TRUE(replace(kFile, ""));
  EXPECT_EQ("", readFile(kFile));
}

TEST_F(ReplaceTest, NameWithoutAFolder) {
  ASSERT_EQ(0, chdir(kFolder));
  ASSERT_TRUE(replace("file", kNew));
  EXPECT_EQ(kNew, readFile(kFile));
}

TEST_F(ReplaceTest, FileOfTwoNamesIsWrittenInPlace) {
  ASSERT_EQ(0, link(kFile, "/tmp/replace/other"));
  ino_t inode = statusOf(kFile).st_ino;
  ASSERT_TRUE(replace(kFile, kNew));
  EXPECT_EQ(inode, statusOf(kFile).st_ino);
  EXPECT_EQ(kNew, readFile("/tmp/replace/other"));
  names_.insert("other");
}

TEST_F(ReplaceTest, LinkStaysALinkAndItsFileIsWrittenInPlace) {
  ASSERT_EQ(0, rename(kFile, "/tmp/replace/real"));
  ASSERT_EQ(0, symlink("real", kFile));
  ASSERT_TRUE(replace(kFile, kNew));
  EXPECT_TRUE(S_ISLNK(statusOf(kFile).st_mode));
  EXPECT_EQ(kNew, readFile("/tmp/replace/real"));
  names_.insert("real");
}

TEST_F(ReplaceTest, LinkToNothingMakesItsFile) {
  unlink(kFile);
  ASSERT_EQ(0, symlink("real", kFile));
  ASSERT_TRUE(replace(kFile, kNew));
  EXPECT_TRUE(S_ISLNK(statusOf(kFile).st_mode));
  EXPECT_EQ(kNew, readFile("/tmp/replace/real"));
  names_.insert("real");
}

TEST_F(ReplaceTest, MountPointIsWrittenInPlace) {
  writeFile("/tmp/behind", kOld);
  ASSERT_EQ(0, mount("/tmp/behind", kFile, nullptr, MS_BIND, nullptr));
  EXPECT_TRUE(replace(kFile, kNew));
  EXPECT_EQ(kNew, readFile("/tmp/behind"));
  ASSERT_EQ(0, umount(kFile));
  EXPECT_EQ(kOld, readFile(kFile));
}

TEST_F(ReplaceTest, MountPointOnAFullDiskKeepsItsContents) {
  ASSERT_EQ(0, mkdir("/tmp/small", 0755));
  ASSERT_EQ(0, mount("none", "/tmp/small", "tmpfs", 0, "size=64k"));
  writeFile("/tmp/small/behind", kOld);
  std::ofstream("/tmp/small/ballast") << std::string(100 * 1024, 'x');  // as much of it as fits
  ASSERT_EQ(0, mount("/tmp/small/behind", kFile, nullptr, MS_BIND, nullptr));
  EXPECT_FALSE(replace(kFile, std::string(32 * 1024, 'n')));
  EXPECT_EQ(ENOSPC, errno);
  EXPECT_EQ(kOld, readFile(kFile));
  ASSERT_EQ(0, umount(kFile));
  ASSERT_EQ(0, umount("/tmp/small"));
}

TEST_F(ReplaceTest, DeviceIsWrittenDirectly) {
  EXPECT_TRUE(replace("/dev/null", kNew));
  EXPECT_TRUE(S_ISCHR(statusOf("/dev/null").st_mode));
}

TEST_F(ReplaceTest, FailureIsRememberedWithItsReason) {
  Replacement file("/dev/full");
  ASSERT_TRUE(file);
  EXPECT_FALSE(file.write("x", 1));
  errno = 0;
  EXPECT_FALSE(file.write("x", 1));
  EXPECT_EQ(ENOSPC, errno);
  errno = 0;
  EXPECT_FALSE(file.commit());
  EXPECT_EQ(ENOSPC, errno);
}

// By somebody who may write to the file and is neither its owner nor root.
void replaceAsNobody() {
  EXPECT_EQ(0, testing::inOtherProcess([] {
              if (setgid(65534) != 0 || setuid(65534) != 0) return 2;
              return replace(kFile, kNew) ? 0 : 1;
            }));
}

// A folder that only its owner may write to, seen by somebody else who may write to the file.
TEST_F(ReplaceTest, FileInAFolderThatRefusesIsWrittenInPlace) {
  ASSERT_EQ(0, chmod(kFile, 0666));
  ino_t inode = statusOf(kFile).st_ino;
  replaceAsNobody();
  EXPECT_EQ(kNew, readFile(kFile));
  EXPECT_EQ(inode, statusOf(kFile).st_ino);
}

// Whoever may not give the new file its old owner writes in place.
TEST_F(ReplaceTest, FileOfSomebodyElseIsWrittenInPlace) {
  ASSERT_EQ(0, chmod(kFolder, 0777));
  ASSERT_EQ(0, chmod(kFile, 0666));
  ino_t inode = statusOf(kFile).st_ino;
  replaceAsNobody();
  EXPECT_EQ(kNew, readFile(kFile));
  EXPECT_EQ(inode, statusOf(kFile).st_ino);
  EXPECT_EQ(0u, statusOf(kFile).st_uid);
}

TEST_F(ReplaceTest, TargetThatCannotBeOpened) {
  for (const char* path : {"", "/tmp/replace", "/tmp/replace/", "/tmp/none/file", "/tmp/replace/file/below"}) {
    Replacement file(path);
    EXPECT_FALSE(file) << path;
  }
}

TEST_F(ReplaceTest, NameTooLongForATemporaryFileIsWrittenInPlace) {
  std::string name(250, 'n');
  std::string path = std::string(kFolder) + "/" + name;
  writeFile(path, kOld);
  ASSERT_TRUE(replace(path.c_str(), kNew));
  EXPECT_EQ(kNew, readFile(path));
  names_.insert(name);
}

TEST_F(ReplaceTest, LeftoversAreRemovedAndNothingElse) {
  for (const char* name : {".file.1.1.new", ".file.99999999.12.new"})
    writeFile(std::string(kFolder) + "/" + name, "left");
  for (const char* name : {".file.1.new", ".file.1.1.new.", ".file.1a.1.new", ".file..1.new", ".files.1.1.new",
                           "file.1.1.new", ".fil.1.1.new", ".file.1.1.old"}) {
    writeFile(std::string(kFolder) + "/" + name, "other");
    names_.insert(name);
  }
  ASSERT_EQ(0, mkdir("/tmp/replace/.file.2.2.new", 0755));
  ASSERT_EQ(0, symlink("file", "/tmp/replace/.file.3.3.new"));
  names_.insert({".file.2.2.new", ".file.3.3.new"});
  ASSERT_TRUE(replace(kFile, kNew));
}

TEST_F(ReplaceTest, FileThatSomebodyIsStillWritingStays) {
  constexpr char kTheirs[] = "/tmp/replace/.file.1.1.new";
  writeFile(kTheirs, "theirs");
  int fd = open(kTheirs, O_RDWR);
  ASSERT_EQ(0, flock(fd, LOCK_EX));
  ASSERT_TRUE(replace(kFile, kNew));
  EXPECT_EQ("theirs", readFile(kTheirs));
  close(fd);
  removeLeftovers(kFile);
}

TEST_F(ReplaceTest, TwoAtOnceDoNotMeet) {
  Replacement one(kFile);
  Replacement other(kFile);
  ASSERT_TRUE(one.write("one", 3));
  ASSERT_TRUE(other.write("other", 5));
  ASSERT_TRUE(one.commit());
  EXPECT_EQ("one", readFile(kFile));
  ASSERT_TRUE(other.commit());
  EXPECT_EQ("other", readFile(kFile));
}

// As a tool does that rewrites the password file beside us.
TEST_F(ReplaceTest, FileThatWasReplacedMeanwhileIsFollowed) {
  constexpr char kLink[] = "/tmp/link-to-target";
  ASSERT_EQ(0, symlink(kFile, kLink));
  Replacement file(kLink);
  ASSERT_TRUE(file.write("ours", 4));
  const std::string theirs = std::string(kFile) + ".theirs";
  close(open(theirs.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
  ASSERT_EQ(0, rename(theirs.c_str(), kFile));
  ASSERT_TRUE(file.commit());
  EXPECT_EQ("ours", readFile(kFile));
  unlink(kLink);
}

}  // namespace
}  // namespace kestrove::sys
