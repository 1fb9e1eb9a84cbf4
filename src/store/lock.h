// SPDX-License-Identifier: Apache-2.0
// The store lock as a guard.
#pragma once

#include <stdint.h>

#include "kestrove/errors.h"
#include "kestrove/segment.h"

namespace kestrove {

// One operation, one hold. The outermost guard of an operation asks for the file lock, whatever the caller's own count
// says, and releases it at its end; the guards inside it only count up and down. So nobody sees an operation half done,
// and a caller that holds the lock by itself finds it released when an operation returns.
class [[nodiscard]] StoreLock {
 public:
  explicit StoreLock(bool take = true) : level_(take ? acquire() : Level::kNotAsked) {}
  ~StoreLock() { release(); }
  StoreLock(const StoreLock&) = delete;
  StoreLock& operator=(const StoreLock&) = delete;

  explicit operator bool() const { return level_ != Level::kFailed; }
  // The caller's process keeps this level of the lock, on purpose; that of an outermost guard with the file lock.
  void leaveHeld();
  void release();
  // The guard stays on duty when this object goes: for kestrove_hold().
  void keepGuarding();

 private:
  enum class Level : uint8_t {
    kFailed,
    kNotAsked,  // or given back
    kInner,     // counted alone: an outer guard holds the file lock
    kOuter,     // holds the file lock
    kUnlocked,  // outermost under a caller's count, where the file lock cannot be had: no failure there
  };
  static Level acquire();
  static Level acquireInner();
  static Level acquireUnderCount();

  Level level_;
};

// For operations that take no lock because their caller says that it holds it, and for the building of the store: the
// guards inside only count, and what the caller has of the file lock stays as it is.
class [[nodiscard]] HeldByCaller {
 public:
  explicit HeldByCaller(bool held);
  ~HeldByCaller();
  HeldByCaller(const HeldByCaller&) = delete;
  HeldByCaller& operator=(const HeldByCaller&) = delete;

 private:
  bool held_;
};

// Around programs that may use the store themselves: the file lock is dropped for a scope, and asked for again where an
// operation still has something to do. What was read before may have changed behind it.
class [[nodiscard]] LockPause {
 public:
  LockPause();
  ~LockPause();
  LockPause(const LockPause&) = delete;
  LockPause& operator=(const LockPause&) = delete;

 private:
  bool again_;
};

}  // namespace kestrove
