// SPDX-License-Identifier: Apache-2.0
#include "kestrove/segment.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/shm.h>
#include <unistd.h>

#include "store/fail.h"
#include "store/journal.h"
#include "store/lock.h"
#include "store/segment.h"
#include "sys/probe.h"
#include "sys/repeated.h"

// What every operation writes to stands at the end of the initialised data. The loader has written to that page when it
// cleared what follows, so the first operation of a process meets no page that must be made for it.
#define AT_HAND [[gnu::section(".data")]]

AT_HAND ShmData* shm = nullptr;
AT_HAND int32_t shm_lock_count = 0;
AT_HAND uint32_t shm_errno = SHM_OK;

namespace kestrove {
namespace {

constexpr char kLockFile[] = "/var/lock/shm";
constexpr mode_t kLockFileMode = 0774;

AT_HAND int lockFile = -1;
AT_HAND bool fileLocked = false;  // by this process
AT_HAND int guards = 0;           // of one operation, one inside the other
AT_HAND int holds = 0;            // of kestrove_hold() among them
ShmData* gone = nullptr;          // where shm_detach() left the pointer

// The one opener of the lock file: closing any other descriptor of it would drop this process's lock. Close-on-exec,
// so that no program started here keeps it open.
int openLockFile(int flags) {
  if (lockFile == -1) lockFile = open(kLockFile, O_RDWR | O_CLOEXEC | flags, kLockFileMode);
  return lockFile == -1 ? fail(SHM_ESYSTEM) : 0;
}

// Ready-made: they are asked for by every operation.
constexpr struct flock wholeFile(short type) {
  return {.l_type = type, .l_whence = SEEK_SET, .l_start = 0, .l_len = 0, .l_pid = 0};
}
constexpr struct flock kTake = wholeFile(F_WRLCK);
constexpr struct flock kGive = wholeFile(F_UNLCK);

int requestLock(int command, const struct flock& request) {
  int result = fcntl(lockFile, command, &request);
  if (result == 0) fileLocked = request.l_type == F_WRLCK;
  return result;
}

int findSegment(size_t size) { return shmget(SHM_KEY, size, 0); }

bool attachById(int id) {
  void* address = id == -1 ? reinterpret_cast<void*>(-1) : shmat(id, nullptr, 0);
  if (address == reinterpret_cast<void*>(-1)) return false;
  shm = static_cast<ShmData*>(address);
  gone = nullptr;
  return true;
}

int failOfSystem(const char* text) {
  perror(text);
  return -1;
}

Segment failToCreate(const char* text) {
  perror(text);
  shm = nullptr;
  return Segment::kFailed;
}

// The file lock was had: what a process left that died inside a change comes before anything else.
void putRight() {
  if (shm && shm != gone) finishAbandonedWork();
}

// Nobody but this process can wait for what it holds itself, so a signal is no reason to go on without the lock.
bool takeLockAgain() {
  uint32_t code = shm_errno;
  bool taken = sys::repeated(takeStoreLock) == 0;
  if (taken) putRight();
  shm_errno = code;
  return taken;
}

// The count stays when the lock can neither be released nor its file closed.
int releaseStoreLock() {
  if (requestLock(F_SETLK, kGive) == -1) {
    if (close(lockFile) != 0) return fail(SHM_ESYSTEM);
    lockFile = -1;
    fileLocked = false;
  }
  KESTROVE_PROBE(lock_released);
  --shm_lock_count;
  return 0;
}

}  // namespace

void holdNewStore() {
  shm_lock_count = 1;
  guards = 1;
}

void endHoldOfNewStore(bool keep) {
  holds = keep;
  if (keep) return;
  guards = 0;
  releaseStoreLock();
}

void giveUpNewStore() { guards = holds = 0; }

bool attachStore() {
  if (shm || attachById(findSegment(SHM_SIZE))) return true;
  shm_errno = SHM_EATTACH;
  return false;
}

int takeStoreLock() {
  if (openLockFile(0) != 0) return -1;
  KESTROVE_PROBE(lock_wait);
  if (requestLock(F_SETLKW, kTake) == -1) return fail(SHM_ESYSTEM);
  KESTROVE_PROBE(lock_granted);
  return 0;
}

Segment createSegment() {
  constexpr char kNoId[] = "Error getting shared memory ID";
  int id = shmget(SHM_KEY, SHM_SIZE, IPC_CREAT | IPC_EXCL | 0666);
  if (id != -1) return attachById(id) ? Segment::kCreated : failToCreate("Error attaching to shared memory");
  if (errno != EEXIST) return failToCreate(kNoId);
  if (findSegment(SHM_SIZE) != -1) return Segment::kExists;
  perror(kNoId);
  return Segment::kFailed;
}

}  // namespace kestrove

using namespace kestrove;

StoreLock::Level StoreLock::acquire() {
  if (guards > 0) return acquireInner();
  if (shm_lock_count > 0) return acquireUnderCount();
  if (shm_lock() != 0) return Level::kFailed;
  ++guards;
  return Level::kOuter;
}

// After a failed initialisation the count is up and no segment is attached: nothing can be done under such a lock.
StoreLock::Level StoreLock::acquireInner() {
  if (!shm) {
    shm_errno = SHM_EATTACH;
    return Level::kFailed;
  }
  ++guards;
  ++shm_lock_count;
  return Level::kInner;
}

StoreLock::Level StoreLock::acquireUnderCount() {
  Level level = acquireInner();
  if (level == Level::kFailed) return level;
  return takeLockAgain() ? Level::kOuter : Level::kUnlocked;
}

void StoreLock::release() {
  Level level = level_;
  level_ = Level::kNotAsked;
  if (level < Level::kInner) return;
  --guards;
  if (level == Level::kOuter) {
    releaseStoreLock();
  } else {
    --shm_lock_count;
  }
}

void StoreLock::leaveHeld() {
  if (level_ >= Level::kInner) --guards;
  level_ = Level::kNotAsked;
}

void StoreLock::keepGuarding() {
  ++holds;
  level_ = Level::kNotAsked;
}

HeldByCaller::HeldByCaller(bool held) : held_(held) { guards += held_; }
HeldByCaller::~HeldByCaller() { guards -= held_; }

LockPause::LockPause() : again_(fileLocked && requestLock(F_SETLK, kGive) == 0) {
  if (again_) KESTROVE_PROBE(lock_released);
}
LockPause::~LockPause() {
  if (again_ && guards > 0) takeLockAgain();
}

int create_lock_file(void) { return openLockFile(O_CREAT | O_TRUNC); }

int shm_lock(void) {
  if (shm_lock_count < 1) {
    if (!attachStore() || takeStoreLock() != 0) return -1;
    putRight();
  }
  ++shm_lock_count;
  return 0;
}

// Every release drops the file lock, an inner one of a nested pair too: kept on purpose.
int shm_unlock(void) { return shm && shm_lock_count > 0 ? releaseStoreLock() : fail(SHM_EINVAL); }

int getSharedMemoryStatus(void) {
  if (!shm && findSegment(1) == -1) return errno == ENOENT ? 0 : fail(SHM_ESYSTEM);
  StoreLock lock;
  return lock ? static_cast<int>(shm->operationalState) : -1;
}

int delete_shared_memory(void) {
  int id = findSegment(1);
  if (id == -1) return failOfSystem("Error getting shared memory ID");
  if (shmctl(id, IPC_RMID, nullptr) == -1) return failOfSystem("Error deleting shared memory");
  shm = nullptr;  // not detached: the kernel destroys the segment with its last user
  return 0;
}

int kestrove_hold(void) {
  StoreLock lock;
  if (!lock) return -1;
  lock.keepGuarding();
  return 0;
}

int kestrove_release(void) {
  if (holds == 0) return fail(SHM_EINVAL);
  --holds;
  --guards;
  if (guards == 0 && fileLocked) return releaseStoreLock();
  --shm_lock_count;
  return 0;
}

void shm_detach(void) {
  if (shm) shmdt(shm);
  gone = shm;
}
