// The store lock as a guard.
#pragma once

#include "kestrove/errors.h"
#include "kestrove/segment.h"

namespace kestrove {

// Holds the store lock for a scope. It nests by count, but every release, an inner one too, drops the file lock: do
// what must be seen as one change before anything that locks and unlocks again.
class StoreLock {
 public:
  explicit StoreLock(bool take = true) : usable_(!take || acquire()), held_(take && usable_) {}
  ~StoreLock() { release(); }
  StoreLock(const StoreLock&) = delete;
  StoreLock& operator=(const StoreLock&) = delete;

  explicit operator bool() const { return usable_; }
  // The caller's process keeps this level of the lock, on purpose.
  void leaveHeld() { held_ = false; }
  void release() {
    if (held_) shm_unlock();
    held_ = false;
  }

 private:
  // After a failed initialisation the count is up and no segment is attached: nothing can be done under such a lock.
  static bool acquire() {
    if (shm_lock() != 0) return false;
    if (shm) return true;
    --shm_lock_count;
    shm_errno = SHM_EATTACH;
    return false;
  }

  bool usable_;
  bool held_;
};

}  // namespace kestrove
