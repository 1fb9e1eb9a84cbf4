// SPDX-License-Identifier: Apache-2.0
// Waiting for the store's lock with a limit, and who holds it. Asked on a descriptor of its own that is never closed:
// closing any descriptor of the lock file would drop this process's lock.
#pragma once

#include <optional>
#include <string>

namespace tools {

struct LockHolder {
  int pid = 0;  // 0: a process that cannot be seen from here
  std::string name;
  bool stopped = false;
};

// Of a process that is there; its name is empty when it is gone.
LockHolder holderOf(int pid);

// "process 12 (shm-init), which is stopped".
std::string describe(const LockHolder& holder);

enum class LockState {
  kFree,     // this process has it now, until it unlocks or ends
  kHeld,     // by another process
  kMissing,  // there is no lock file
  kDenied,   // the lock file may not be opened
  kFailed    // anything else; errno tells
};

struct LockAnswer {
  LockState state = LockState::kFailed;
  LockHolder holder;  // of a lock that is held
  int error = 0;
};

// Who has it, taking nothing: free means that nobody has it at this moment.
LockAnswer lookAtLock();

// Takes the lock if nobody has it.
LockAnswer tryLock();

// The same, as long as it is held for up to that many seconds.
LockAnswer waitForLock(double seconds);

// From now on this process waits that long at most for locks, all its waits together; a child has what is left then.
void limitWaits(double seconds);

// What that leaves of a wait, for a lock of another kind.
double waitLeft(double seconds);
void countWait(double seconds);

// Gives back what tryLock and waitForLock have taken.
void giveLockBack();

// "the store is locked by process 12 (sleep), which is stopped; not free within 10 seconds (--wait)".
std::string heldTooLong(const LockHolder& holder, double seconds);

}  // namespace tools
