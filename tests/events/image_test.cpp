// SPDX-License-Identifier: Apache-2.0
// The file: a byte-for-byte image, overwritten in place, never shorter than whole.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

constexpr char kFile[] = "/tmp/event.log";
constexpr size_t kImage = 360460;

std::string pattern(char first) {
  std::string bytes(kImage, '\0');
  for (size_t i = 0; i < kImage; ++i) bytes[i] = static_cast<char>(first + static_cast<char>(i % 251));
  return bytes;
}

ino_t inodeOf(const char* path) {
  struct stat file;
  return stat(path, &file) == 0 ? file.st_ino : 0;
}

int openDescriptors() {
  int count = 0;
  for (int fd = 0; fd < 256; ++fd) count += fcntl(fd, F_GETFD) != -1;
  return count;
}

TEST(EventImage, IsTheAreaByteForByte) {
  const std::string area = pattern(1);
  EXPECT_EQ(0, write_event_log(kFile, area.data()));
  EXPECT_TRUE(area == readFile(kFile));
  std::string back(kImage, '\0');
  EXPECT_EQ(0, read_event_log(kFile, back.data()));
  EXPECT_TRUE(area == back);
}

TEST(EventImage, IsOverwrittenInPlace) {
  EXPECT_EQ(0, write_event_log(kFile, pattern(1).data()));
  ino_t inode = inodeOf(kFile);
  EXPECT_EQ(0, write_event_log(kFile, pattern(2).data()));
  EXPECT_EQ(inode, inodeOf(kFile));
  EXPECT_TRUE(pattern(2) == readFile(kFile));
}

TEST(EventImage, ALongerFileIsCutToItsSize) {
  writeFile(kFile, std::string(kImage + 5000, '#'));
  EXPECT_EQ(0, write_event_log(kFile, pattern(1).data()));
  EXPECT_TRUE(pattern(1) == readFile(kFile));
}

TEST(EventImage, AShorterFileGrows) {
  writeFile(kFile, "short");
  EXPECT_EQ(0, write_event_log(kFile, pattern(1).data()));
  EXPECT_TRUE(pattern(1) == readFile(kFile));
}

TEST(EventImage, IsMadeWithTheModeThatTheProcessGives) {
  umask(027);
  EXPECT_EQ(0, write_event_log(kFile, pattern(1).data()));
  struct stat file;
  ASSERT_EQ(0, stat(kFile, &file));
  EXPECT_EQ(0640u, file.st_mode & 0777);
}

TEST(EventImage, NeitherCallKeepsADescriptor) {
  int before = openDescriptors();
  std::string area = pattern(1);
  EXPECT_EQ(0, write_event_log(kFile, area.data()));
  EXPECT_EQ(0, read_event_log(kFile, area.data()));
  EXPECT_EQ(-1, write_event_log("/dev/full", area.data()));
  writeFile(kFile, "short");
  EXPECT_EQ(-1, read_event_log(kFile, area.data()));
  EXPECT_EQ(before, openDescriptors());
}

TEST(EventImage, CannotBeOpenedForWriting) {
  EXPECT_FAILS_WITH(SHM_EOPEN, write_event_log("/tmp/no/such/folder", pattern(1).data()));
  EXPECT_FAILS_WITH(SHM_EOPEN, write_event_log("/tmp", pattern(1).data()));
}

TEST(EventImage, AFailedWriteKeepsItsError) {
  errno = 0;
  EXPECT_FAILS_WITH(SHM_EIO, write_event_log("/dev/full", pattern(1).data()));
  EXPECT_EQ(ENOSPC, errno);
}

TEST(EventImage, GoesToADeviceWithoutCutting) { EXPECT_EQ(0, write_event_log("/dev/null", pattern(1).data())); }

TEST(EventImage, MissingOrShortIsNotReadAndSetsNoCode) {
  std::string area(kImage, 'a');
  shm_errno = 42;
  EXPECT_EQ(-1, read_event_log("/tmp/missing", area.data()));
  writeFile(kFile, pattern(1).substr(1));
  EXPECT_EQ(-1, read_event_log(kFile, area.data()));
  writeFile(kFile, "");
  EXPECT_EQ(-1, read_event_log(kFile, area.data()));
  EXPECT_EQ(-1, read_event_log("/tmp", area.data()));
  EXPECT_EQ(-1, read_event_log("/dev/null", area.data()));
  EXPECT_EQ(42u, shm_errno);
  EXPECT_TRUE(std::string(kImage, 'a') == area);
}

TEST(EventImage, OfALongerFileTheFirstBlockIsRead) {
  writeFile(kFile, pattern(1) + "more");
  std::string area(kImage + 4, 'a');
  EXPECT_EQ(0, read_event_log(kFile, area.data()));
  EXPECT_TRUE(pattern(1) + "aaaa" == area);
}

TEST(EventImage, PathAndAreaAreNeeded) {
  char area[1] = {};
  EXPECT_FAILS_WITH(SHM_EINVAL, write_event_log(nullptr, area));
  EXPECT_FAILS_WITH(SHM_EINVAL, write_event_log(kFile, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, read_event_log(nullptr, area));
  EXPECT_FAILS_WITH(SHM_EINVAL, read_event_log(kFile, nullptr));
  EXPECT_FALSE(fileExists(kFile));
}

}  // namespace
}  // namespace kestrove::testing
