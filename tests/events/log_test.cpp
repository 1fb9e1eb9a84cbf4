// SPDX-License-Identifier: Apache-2.0
// The ring: what is recorded, what is dropped, what each call answers.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "tests/support/files.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

constexpr size_t kImage = 360460;

std::string text(uint32_t index, int layout = 2) {
  char line[128];
  int length = getEventString(index, line, sizeof line, layout);
  return length > 0 ? std::string(line, static_cast<size_t>(length)) : "result " + std::to_string(length);
}

// The user name of the index-th oldest event.
std::string user(uint32_t index) {
  std::string line = text(index);
  size_t comma = 0;
  for (int field = 0; field < 4; ++field) comma = line.find(',', comma) + 1;
  return line.substr(comma, line.find(',', comma) - comma);
}

std::string image() { return std::string(reinterpret_cast<char*>(&shm->eventLog), sizeof(EventLog)); }

void logNumbered(uint32_t from, uint32_t to) {
  for (uint32_t i = from; i < to; ++i) ASSERT_EQ(0, logEvent(24, 3, std::to_string(i).c_str())) << i;
}

// Puts a read-only descriptor, which takes no write lock, in the place of the lock file's.
void breakLockFile() {
  for (int fd = 3; fd < 64; ++fd) {
    char path[64] = {};
    std::string link = "/proc/self/fd/" + std::to_string(fd);
    if (readlink(link.c_str(), path, sizeof path - 1) <= 0 || !strstr(path, "/lock/shm")) continue;
    int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, fd);
    close(nothing);
  }
}

class EventLogging : public StoreTest {};

TEST_F(EventLogging, EmptyHasNoEvents) {
  EXPECT_EQ(0, getEventCount());
  EXPECT_EQ("result 0", text(0));
}

TEST_F(EventLogging, AnEventIsRecordedWholeAndTheFileIsTheRing) {
  time_t before = time(nullptr);
  memset(shm->eventLog.record[0].userName, '#', sizeof shm->eventLog.record[0].userName);
  EXPECT_EQ(0, logEvent(21, 2, "admin"));
  const EventRecord& record = shm->eventLog.record[0];
  EXPECT_GE(record.timestamp, before);
  EXPECT_LE(record.timestamp, time(nullptr));
  EXPECT_EQ(21u, record.eventId);
  EXPECT_EQ(2u, record.source);
  EXPECT_EQ(std::string("admin").append(27, '\0'), std::string(record.userName, 32));
  EXPECT_EQ(0u, shm->eventLog.eventLogFull);
  EXPECT_EQ(0u, shm->eventLog.readIndex);
  EXPECT_EQ(1u, shm->eventLog.writeIndex);
  EXPECT_EQ(1, getEventCount());
  EXPECT_TRUE(image() == readFile(kEventFile));
  EXPECT_EQ(kImage, readFile(kEventFile).size());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(EventLogging, BogusIdsAreWarnedAboutAndStoredAllTheSame) {
  clearSyslog();
  EXPECT_EQ(0, logEvent(49, 0, "x"));
  EXPECT_EQ(0, logEvent(UINT32_MAX, 0, "x"));
  EXPECT_EQ((std::vector<std::string>{"warning: Bogus Event: 49", "warning: Bogus Event: -1"}), syslogLines());
  EXPECT_EQ(49u, shm->eventLog.record[0].eventId);
  EXPECT_EQ(UINT32_MAX, shm->eventLog.record[1].eventId);
  EXPECT_EQ(",---,System,x,Unknown event", text(0).substr(19));
}

TEST_F(EventLogging, LongUserNamesKeepTheirFirst32Bytes) {
  EXPECT_EQ(0, logEvent(24, 3, "abcdefghijklmnopqrstuvwxyz0123456789"));
  EXPECT_EQ("abcdefghijklmnopqrstuvwxyz012345", std::string(shm->eventLog.record[0].userName, 32));
  EXPECT_EQ("abcdefghijklmnopqrstuvwxyz012345", user(0));
}

TEST_F(EventLogging, NoUserCountsAsEmpty) {
  EXPECT_EQ(0, logEvent(24, 3, nullptr));
  EXPECT_EQ(std::string(32, '\0'), std::string(shm->eventLog.record[0].userName, 32));
}

TEST_F(EventLogging, WorksInEveryOperationalState) {
  for (uint32_t state = 0; state <= 6; ++state) {
    shm->operationalState = state;
    EXPECT_EQ(0, logEvent(24, 3, "x"));
    EXPECT_EQ(static_cast<int>(state) + 1, getEventCount());
  }
}

TEST_F(EventLogging, SwitchedOffStoresNothingAndLeavesTheFile) {
  EXPECT_EQ(0, logEvent(2, 0, "--"));
  const std::string before = readFile(kEventFile), ring = image();
  shm->config.loggingOperState = SHM_OFF;
  clearSyslog();
  EXPECT_FAILS_WITH(SHM_ELOGOFF, logEvent(3, 0, "--"));
  EXPECT_EQ(std::vector<std::string>{"info: Event logged: Information, System, System Rebooted"}, syslogLines());
  EXPECT_TRUE(before == readFile(kEventFile));
  EXPECT_TRUE(ring == image());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(EventLogging, OnlyTheValueTwoSwitchesItOff) {
  for (int value : {0, 1, 3, 255}) {
    shm->config.loggingOperState = static_cast<uint8_t>(value);
    EXPECT_EQ(0, logEvent(2, 0, "--")) << value;
  }
}

TEST_F(EventLogging, WithoutStoreEveryCallFailsAsTheLockDoes) {
  dropStore();
  char line[16];
  EXPECT_FAILS_WITH(SHM_EATTACH, logEvent(2, 0, "--"));
  EXPECT_FAILS_WITH(SHM_EATTACH, getEventString(0, line, sizeof line, 1));
  EXPECT_FAILS_WITH(SHM_EATTACH, getEventCount());
  EXPECT_FAILS_WITH(SHM_EATTACH, clearEventLog(0, "--"));
  EXPECT_FAILS_WITH(SHM_EATTACH, wipeEventLog());
}

TEST_F(EventLogging, ALockThatCannotBeTakenRecordsNothing) {
  breakLockFile();
  EXPECT_FAILS_WITH(SHM_ESYSTEM, logEvent(2, 0, "--"));
  EXPECT_FAILS_WITH(SHM_ESYSTEM, getEventCount());
  EXPECT_EQ(0u, shm->eventLog.writeIndex);
  EXPECT_FALSE(fileExists(kEventFile));
}

TEST_F(EventLogging, AtTheEndOfTheRing) {
  logNumbered(0, 8191);
  EXPECT_EQ(0u, shm->eventLog.eventLogFull);
  EXPECT_EQ(8191u, shm->eventLog.writeIndex);
  EXPECT_EQ(8191, getEventCount());
  EXPECT_EQ("8190", user(8190));
  EXPECT_EQ("result 0", text(8191));

  logNumbered(8191, 8192);
  EXPECT_EQ(1u, shm->eventLog.eventLogFull);
  EXPECT_EQ(0u, shm->eventLog.readIndex);
  EXPECT_EQ(0u, shm->eventLog.writeIndex);
  EXPECT_EQ(8192, getEventCount());
  EXPECT_EQ("0", user(0));
  EXPECT_EQ("8191", user(8191));
  EXPECT_EQ("result 0", text(8192));

  logNumbered(8192, 8193);
  EXPECT_EQ(1u, shm->eventLog.eventLogFull);
  EXPECT_EQ(1u, shm->eventLog.readIndex);
  EXPECT_EQ(1u, shm->eventLog.writeIndex);
  EXPECT_EQ(8192, getEventCount());
  EXPECT_EQ("1", user(0));
  EXPECT_EQ("8192", user(8191));
  EXPECT_TRUE(image() == readFile(kEventFile));
}

TEST_F(EventLogging, TheReaderWrapsToo) {
  shm->eventLog.eventLogFull = 1;
  shm->eventLog.readIndex = 8191;
  shm->eventLog.writeIndex = 8191;
  logNumbered(0, 1);
  EXPECT_EQ(0u, shm->eventLog.readIndex);
  EXPECT_EQ(0u, shm->eventLog.writeIndex);
  EXPECT_EQ("0", user(8191));
}

TEST_F(EventLogging, DamagedIndexesAreReduced) {
  shm->eventLog.writeIndex = 8192 + 5;
  logNumbered(0, 1);
  EXPECT_EQ(6u, shm->eventLog.writeIndex);
  EXPECT_EQ('0', shm->eventLog.record[5].userName[0]);

  shm->eventLog.eventLogFull = 1;
  shm->eventLog.readIndex = UINT32_MAX;
  shm->eventLog.writeIndex = UINT32_MAX;
  EXPECT_GT(getEventString(8191, std::string(128, ' ').data(), 128, 1), 0);
  logNumbered(1, 2);
  EXPECT_EQ(0u, shm->eventLog.readIndex);
  EXPECT_EQ(0u, shm->eventLog.writeIndex);
  EXPECT_EQ('1', shm->eventLog.record[8191].userName[0]);
}

TEST_F(EventLogging, ADamagedCountIsToldAsItStands) {
  shm->eventLog.writeIndex = 70000;
  EXPECT_EQ(70000, getEventCount());
  EXPECT_NE("result 0", text(8191)) << "every slot lies below the damaged index";
  EXPECT_EQ("result 0", text(8192));
  shm->eventLog.eventLogFull = 77;
  EXPECT_EQ(8192, getEventCount());
}

TEST_F(EventLogging, IndexesBeyondTheRingNeedNoLock) {
  dropStore();
  char line[16];
  for (uint32_t index : {8192u, 0x7FFFFFFFu, 0xFFFFFFFFu}) EXPECT_EQ(0, getEventString(index, line, sizeof line, 1));
}

TEST_F(EventLogging, ABufferTooSmallCutsTheText) {
  EXPECT_EQ(0, logEvent(2, 0, "--"));
  char line[16] = "###############";
  EXPECT_EQ(9, getEventString(0, line, 10, 1));
  EXPECT_EQ(9u, strlen(line));
  EXPECT_EQ('#', line[10]);
  EXPECT_EQ(0, getEventString(0, line, 0, 1));
  EXPECT_FAILS_WITH(SHM_EINVAL, getEventString(0, line, -1, 1));
}

TEST_F(EventLogging, NoBufferIsRefusedAndReleasesTheLock) {
  EXPECT_EQ(0, logEvent(2, 0, "--"));
  EXPECT_FAILS_WITH(SHM_EINVAL, getEventString(0, nullptr, 128, 1));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(EventLogging, AFileThatCannotBeOpenedLeavesTheRecord) {
  ASSERT_EQ(0, mkdir(kEventFile, 0755));
  EXPECT_FAILS_WITH(SHM_EOPEN, logEvent(2, 0, "--"));
  EXPECT_EQ(1, getEventCount());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(EventLogging, AFullDiskLeavesTheRecordAndTellsWhy) {
  ASSERT_EQ(0, symlink("/dev/full", kEventFile));
  errno = 0;
  EXPECT_FAILS_WITH(SHM_EIO, logEvent(2, 0, "--"));
  EXPECT_EQ(ENOSPC, errno);
  EXPECT_EQ(1, getEventCount());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(EventLogging, ClearingEmptiesAndLogsItself) {
  logNumbered(0, 3);
  shm->eventLog.eventLogFull = 1;
  shm->eventLog.readIndex = 7;
  EXPECT_EQ(0, clearEventLog(2, "admin"));
  EXPECT_EQ(1, getEventCount());
  EXPECT_EQ(0u, shm->eventLog.eventLogFull);
  EXPECT_EQ(0u, shm->eventLog.readIndex);
  EXPECT_EQ(",Information,HTTP,admin,System Event Log Cleared", text(0).substr(19));
  EXPECT_STREQ("1", shm->eventLog.record[1].userName) << "records stay where they are";
  EXPECT_TRUE(image() == readFile(kEventFile));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(EventLogging, ClearingWithLoggingOffLeavesItEmpty) {
  logNumbered(0, 3);
  shm->config.loggingOperState = SHM_OFF;
  shm_errno = 0;
  EXPECT_EQ(0, clearEventLog(2, "admin"));
  EXPECT_EQ(uint32_t(SHM_ELOGOFF), shm_errno);
  EXPECT_EQ(0, getEventCount());
  EXPECT_TRUE(image() == readFile(kEventFile));
}

TEST_F(EventLogging, ClearingTellsOfAFileThatCannotBeWrittenAndStillLogs) {
  logNumbered(0, 3);
  ASSERT_EQ(0, unlink(kEventFile));
  ASSERT_EQ(0, mkdir(kEventFile, 0755));
  EXPECT_FAILS_WITH(SHM_EOPEN, clearEventLog(2, "admin"));
  EXPECT_EQ(1, getEventCount());
}

TEST_F(EventLogging, ClearingTellsOfItsFileAndNotOfItsEvent) {
  shm->config.loggingOperState = SHM_OFF;
  ASSERT_EQ(0, mkdir(kEventFile, 0755));
  EXPECT_FAILS_WITH(SHM_EOPEN, clearEventLog(2, "admin"));
  EXPECT_EQ(EISDIR, errno);
  ASSERT_EQ(0, rmdir(kEventFile));
  ASSERT_EQ(0, symlink("/dev/full", kEventFile));
  for (uint8_t logging : {SHM_OFF, SHM_ON}) {
    shm->config.loggingOperState = logging;
    errno = 0;
    EXPECT_FAILS_WITH(SHM_EIO, clearEventLog(2, "admin"));
    EXPECT_EQ(ENOSPC, errno);
  }
}

TEST_F(EventLogging, NamesInTheLogItselfAreNamesLikeOthers) {
  ASSERT_EQ(0, logEvent(24, 3, "administrator"));
  shm->eventLog.writeIndex = 0;
  EXPECT_EQ(0, logEvent(24, 3, shm->eventLog.record[0].userName + 3));
  EXPECT_STREQ("inistrator", shm->eventLog.record[0].userName);
  EXPECT_EQ(0, clearEventLog(3, shm->eventLog.record[0].userName + 3));
  EXPECT_STREQ("strator", shm->eventLog.record[0].userName);
  strcpy(shm->eventSourceUsername, "someone");
  EXPECT_EQ(0, logEvent(24, 3, shm->eventSourceUsername));
  EXPECT_STREQ("someone", shm->eventLog.record[1].userName);
}

TEST_F(EventLogging, LineWrittenOverItsOwnRecord) {
  ASSERT_EQ(0, logEvent(24, 3, "admin"));
  const std::string line = text(0);
  char* buffer = reinterpret_cast<char*>(&shm->eventLog.record[0]);
  EXPECT_EQ(static_cast<int>(line.size()), getEventString(0, buffer, 128, 2));
  EXPECT_EQ(line, buffer);
}

TEST_F(EventLogging, PathsAndAreasOfTheStore) {
  ASSERT_EQ(0, logEvent(24, 3, "admin"));
  const std::string before = image();
  EXPECT_EQ(0, write_event_log(shm->config.eventLogFileName, &shm->eventLog));
  shm->eventLog = {};
  EXPECT_EQ(0, read_event_log(shm->config.eventLogFileName, &shm->eventLog));
  EXPECT_TRUE(before == image());
}

TEST_F(EventLogging, WipingLogsNothing) {
  logNumbered(0, 3);
  clearSyslog();
  EXPECT_EQ(0, wipeEventLog());
  EXPECT_EQ(0, getEventCount());
  EXPECT_TRUE(image() == readFile(kEventFile));
  EXPECT_TRUE(syslogLines().empty());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(EventLogging, WipingTellsOfAFileThatCannotBeWritten) {
  ASSERT_EQ(0, mkdir(kEventFile, 0755));
  EXPECT_FAILS_WITH(SHM_EOPEN, wipeEventLog());
}

TEST_F(EventLogging, ProcessesThatLogTogetherLoseNothing) {
  constexpr int kWriters = 4, kEach = 200;
  for (int writer = 0; writer < kWriters; ++writer) {
    if (fork() != 0) continue;
    for (int i = 0; i < kEach; ++i) {
      if (logEvent(24, static_cast<uint32_t>(writer), "x") != 0) _exit(1);
    }
    _exit(0);
  }
  for (int writer = 0; writer < kWriters; ++writer) {
    int status;
    wait(&status);
    EXPECT_EQ(0, status);
  }
  EXPECT_EQ(kWriters * kEach, getEventCount());
  int counts[kWriters] = {};
  for (int i = 0; i < kWriters * kEach; ++i) ++counts[shm->eventLog.record[i].source % kWriters];
  for (int count : counts) EXPECT_EQ(kEach, count);
  EXPECT_TRUE(image() == readFile(kEventFile));
}

}  // namespace
}  // namespace kestrove::testing
