// SPDX-License-Identifier: Apache-2.0
// Attaching, creating and locking below the exported lock.
#pragma once

namespace kestrove {

// For functions that work without the lock, called in a process that is not attached yet. False with code 1 when the
// segment cannot be attached.
[[nodiscard]] bool attachStore();

// Opens the lock file if needed and waits for the file lock; the count is left alone. 0, or -1 with code 2.
[[nodiscard]] int takeStoreLock();

// The count and the guard of the process that builds the store, which took the file lock just before. A failure keeps
// count and file lock; a success ends the hold, or leaves it to kestrove_release().
void holdNewStore();
void giveUpNewStore();
void endHoldOfNewStore(bool keep);

enum class Segment {
  kFailed,   // the reason stands on standard error
  kExists,   // made by somebody else and left alone: not attached here
  kCreated,  // zeroed and attached
};
[[nodiscard]] Segment createSegment();

}  // namespace kestrove
