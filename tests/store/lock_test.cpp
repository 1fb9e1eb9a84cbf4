// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "kestrove/kestrove.h"
#include "tests/support/files.h"
#include "tests/support/peer.h"
#include "tests/support/store.h"

using namespace kestrove::testing;
using ::testing::HasSubstr;

namespace {

constexpr int kBriefly = 150;  // milliseconds

int segmentId() { return shmget(SHM_KEY, 1, 0); }

class Lock : public StoreTest {};
class NoStore : public ::testing::Test {};

TEST_F(Lock, InnerUnlockReleasesTheFileAndKeepsTheCount) {
  EXPECT_EQ(0, shm_lock());
  EXPECT_EQ(1, shm_lock_count);
  EXPECT_TRUE(fileLockHeld());
  EXPECT_EQ(0, shm_lock());
  EXPECT_EQ(2, shm_lock_count);
  EXPECT_EQ(0, shm_unlock());
  EXPECT_EQ(1, shm_lock_count);
  EXPECT_FALSE(fileLockHeld());
  EXPECT_EQ(0, shm_lock());  // nested again: the file stays free
  EXPECT_FALSE(fileLockHeld());
  EXPECT_EQ(0, shm_unlock());
  EXPECT_EQ(0, shm_unlock());
  EXPECT_EQ(0, shm_lock_count);
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_unlock());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Lock, SuccessKeepsTheCodeOfTheLastFailure) {
  shm_errno = 77;
  shm_lock();
  shm_unlock();
  EXPECT_EQ(77u, shm_errno);
}

TEST_F(Lock, ProcessStaysAttachedAndKeepsTheFileOpen) {
  shm_lock();
  int fd = lockDescriptor();
  shm_unlock();
  EXPECT_NE(nullptr, shm);
  EXPECT_NE(-1, fd);
  EXPECT_EQ(fd, lockDescriptor());
}

TEST_F(Lock, DescriptorIsCloseOnExec) {
  shm_lock();
  EXPECT_EQ(FD_CLOEXEC, fcntl(lockDescriptor(), F_GETFD));
  shm_unlock();
}

TEST_F(Lock, ChildDoesNotInheritTheLock) {
  shm_lock();
  EXPECT_EQ(0, inOtherProcess([] {
              shm_unlock();  // the count came along with the fork, the lock did not
              return shm_lock_count;
            }));
  EXPECT_TRUE(fileLockHeld());
  shm_unlock();
}

TEST_F(Lock, OtherProcessWaitsForIt) {
  Peer peer([](const Peer::Line& line) {
    line.hear();
    if (shm_lock() != 0) return 1;
    line.say('l');
    line.hear();
    return shm_unlock();
  });
  shm_lock();
  peer.line().say('g');
  EXPECT_TRUE(peer.line().silentFor(kBriefly));
  shm_unlock();
  EXPECT_EQ('l', peer.line().hear());
  peer.line().say('u');
  EXPECT_EQ(0, peer.join());
}

TEST_F(Lock, InnerUnlockLetsAnotherProcessIn) {
  shm_lock();
  shm_lock();
  Peer peer([](const Peer::Line& line) {
    shm_lock_count = 0;
    if (shm_lock() != 0) return 1;
    line.say('l');
    return shm_unlock();
  });
  EXPECT_TRUE(peer.line().silentFor(kBriefly));
  shm_unlock();
  EXPECT_EQ('l', peer.line().hear());
  EXPECT_EQ(0, peer.join());
  shm_unlock();
}

// Until its parent speaks or ends it.
int holdLock(const Peer::Line& line) {
  shm_lock();
  line.say('l');
  line.hear();
  return 0;
}

TEST_F(Lock, HolderThatDiesLeavesItFree) {
  Peer holder(holdLock);
  ASSERT_EQ('l', holder.line().hear());
  EXPECT_TRUE(fileLockHeld());
  holder.kill();
  EXPECT_FALSE(fileLockHeld());
  EXPECT_EQ(0, shm_lock());
  EXPECT_EQ(0, shm_unlock());
}

TEST_F(Lock, WaiterGetsItWhenTheHolderDies) {
  Peer holder(holdLock);
  ASSERT_EQ('l', holder.line().hear());
  Peer waiter([](const Peer::Line& line) {
    int result = shm_lock();
    line.say('l');
    return result;
  });
  EXPECT_TRUE(waiter.line().silentFor(kBriefly));
  holder.kill();
  EXPECT_EQ('l', waiter.line().hear());
  EXPECT_EQ(0, waiter.join());
}

TEST_F(Lock, InterruptedWaitIsASystemError) {
  Peer waiter([](const Peer::Line& line) {
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    line.say('r');
    line.hear();
    int result = shm_lock();
    return result == -1 && shm_errno == SHM_ESYSTEM && errno == EINTR && shm_lock_count == 0 ? 0 : 1;
  });
  ASSERT_EQ('r', waiter.line().hear());
  shm_lock();
  waiter.line().say('g');
  usleep(kBriefly * 1000);
  kill(waiter.pid(), SIGUSR1);
  EXPECT_EQ(0, waiter.join());
  shm_unlock();
}

TEST_F(Lock, NestedLockLooksAtNothing) {
  shm_lock_count = 3;
  ShmData* attached = shm;
  shm = nullptr;
  EXPECT_EQ(0, shm_lock());
  EXPECT_EQ(4, shm_lock_count);
  EXPECT_EQ(nullptr, shm);
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_unlock());  // nothing attached
  EXPECT_EQ(4, shm_lock_count);
  shm = attached;
  shm_lock_count = 0;
}

TEST_F(Lock, NegativeCountIsNotLocked) {
  shm_lock_count = -1;
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_unlock());
  EXPECT_EQ(-1, shm_lock_count);
  shm_lock_count = 0;
}

TEST_F(Lock, UnlockThatFailsClosesTheFile) {
  shm_lock();
  int fd = lockDescriptor();
  dup2(open(kLockFile, O_PATH), fd);  // which cannot be unlocked, but closed
  EXPECT_EQ(0, shm_unlock());
  EXPECT_EQ(0, shm_lock_count);
  EXPECT_EQ(-1, fcntl(fd, F_GETFD));
  EXPECT_EQ(0, shm_lock());  // opens it again
  EXPECT_TRUE(fileLockHeld());
  shm_unlock();
}

TEST_F(Lock, UnlockThatCanNeitherReleaseNorCloseFails) {
  shm_lock();
  close(lockDescriptor());
  EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_unlock());
  EXPECT_EQ(1, shm_lock_count);
  shm_lock_count = 0;
}

TEST_F(NoStore, LockWithoutASegmentFails) {
  ASSERT_EQ(-1, segmentId());
  EXPECT_FAILS_WITH(SHM_EATTACH, shm_lock());
  EXPECT_EQ(0, shm_lock_count);
  EXPECT_EQ(nullptr, shm);
}

TEST_F(NoStore, UnlockWithoutALockFails) {
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_unlock());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(NoStore, LockNeverMakesTheLockFile) {
  int id = shmget(SHM_KEY, SHM_SIZE, IPC_CREAT | 0666);
  ASSERT_NE(-1, id);
  unlink(kLockFile);
  EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_lock());
  EXPECT_NE(nullptr, shm) << "attached before the file is opened";
  EXPECT_FALSE(fileExists(kLockFile));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(NoStore, SmallerSegmentUnderTheKeyCannotBeAttached) {
  ASSERT_NE(-1, shmget(SHM_KEY, 4096, IPC_CREAT | 0666));
  EXPECT_FAILS_WITH(SHM_EATTACH, shm_lock());
  EXPECT_FAILS_WITH(SHM_EATTACH, getSharedMemoryStatus());
}

TEST_F(NoStore, LockFileIsMadeEmptyAndKeptOpen) {
  writeFile(kLockFile, "left over");
  EXPECT_EQ(0, create_lock_file());
  EXPECT_EQ("", readFile(kLockFile));
  int fd = lockDescriptor();
  writeFile(kLockFile, "again");
  EXPECT_EQ(0, create_lock_file());
  EXPECT_EQ("again", readFile(kLockFile));
  EXPECT_EQ(fd, lockDescriptor());
}

TEST_F(NoStore, LockFileHasItsMode) {
  unlink(kLockFile);
  umask(0);
  ASSERT_EQ(0, create_lock_file());
  struct stat status;
  ASSERT_EQ(0, stat(kLockFile, &status));
  EXPECT_EQ(0774u, status.st_mode & 07777);
}

TEST_F(NoStore, LockFileThatCannotBeMadeIsASystemError) {
  unlink(kLockFile);
  ASSERT_EQ(0, mkdir(kLockFile, 0755));
  EXPECT_FAILS_WITH(SHM_ESYSTEM, create_lock_file());
}

TEST_F(NoStore, StatusIsZeroAndKeepsTheCode) {
  shm_errno = 77;
  EXPECT_EQ(0, getSharedMemoryStatus());
  EXPECT_EQ(77u, shm_errno);
}

TEST_F(Lock, StatusIsTheOperationalState) {
  for (uint32_t state : {0u, 1u, 3u, 5u, 4000u}) {
    shm->operationalState = state;
    EXPECT_EQ(static_cast<int>(state), getSharedMemoryStatus());
  }
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Lock, StatusAttaches) {
  shm->operationalState = 2;
  EXPECT_EQ(2, inOtherProcess([] {
              shm = nullptr;
              int state = getSharedMemoryStatus();
              return shm ? state : 99;
            }));
}

TEST_F(Lock, StatusUnderACountWithoutASegmentFails) {
  ShmData* attached = shm;
  shm = nullptr;
  shm_lock_count = 1;  // as a failed initialisation leaves it
  EXPECT_FAILS_WITH(SHM_EATTACH, getSharedMemoryStatus());
  EXPECT_EQ(1, shm_lock_count);
  shm = attached;
  shm_lock_count = 0;
}

TEST_F(NoStore, DeleteWithoutASegmentSaysSo) {
  shm_errno = 77;
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(-1, delete_shared_memory());
  EXPECT_EQ("Error getting shared memory ID: No such file or directory\n", ::testing::internal::GetCapturedStderr());
  EXPECT_EQ(77u, shm_errno);
}

TEST_F(Lock, DeleteOfSomebodyElsesSegmentSaysSo) {
  shm_errno = 77;
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(0, inOtherProcess([] {
              if (setresuid(65534, 65534, 65534) != 0) return 1;
              return delete_shared_memory() == -1 && shm && shm_errno == 77 ? 0 : 2;
            }));
  EXPECT_EQ("Error deleting shared memory: Operation not permitted\n", ::testing::internal::GetCapturedStderr());
  EXPECT_NE(-1, segmentId());
}

TEST_F(Lock, DeletedStoreStaysMappedUntilTheLastProcessLeaves) {
  ShmData* mapped = shm;
  mapped->config.zipType = 7;
  EXPECT_EQ(0, delete_shared_memory());
  EXPECT_EQ(nullptr, shm);
  EXPECT_EQ(7u, mapped->config.zipType);
  EXPECT_EQ(-1, segmentId());
  EXPECT_FAILS_WITH(SHM_EATTACH, shm_lock());
}

TEST_F(Lock, LockAfterDeleteLooksTheKeyUpAgain) {
  delete_shared_memory();
  int id = shmget(SHM_KEY, SHM_SIZE, IPC_CREAT | IPC_EXCL | 0666);
  ASSERT_NE(-1, id);
  EXPECT_EQ(0, shm_lock());
  ASSERT_NE(nullptr, shm);
  EXPECT_EQ(0u, shm->config.minRate);
  shm_unlock();
}

TEST_F(Lock, DetachKeepsThePointerAndTheCount) {
  ShmData* attached = shm;
  shm_lock();
  shm_detach();
  EXPECT_EQ(attached, shm);
  EXPECT_EQ(1, shm_lock_count);
  shmid_ds status;
  ASSERT_EQ(0, shmctl(segmentId(), IPC_STAT, &status));
  EXPECT_EQ(0u, status.shm_nattch);
  shm = nullptr;
  shm_lock_count = 0;
}

TEST_F(NoStore, DetachWithoutASegmentDoesNothing) {
  shm_detach();
  EXPECT_EQ(nullptr, shm);
}

TEST_F(NoStore, GlobalsStartEmpty) {
  EXPECT_EQ(nullptr, shm);
  EXPECT_EQ(0, shm_lock_count);
  EXPECT_EQ(0u, shm_errno);
  EXPECT_EQ(-1, lockDescriptor());
}

}  // namespace
