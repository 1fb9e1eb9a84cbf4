// SPDX-License-Identifier: Apache-2.0
// The save that a change ends with.
#pragma once

#include <errno.h>

#include "store/fail.h"

namespace kestrove {

// A save that did not reach the file leaves its code and errno, whatever the operation does after it: callers that
// clear the code before can tell a change that is applied from one that is saved, too.
class ChangeSave {
 public:
  void run(int (*save)()) {
    uint32_t before = shm_errno;
    shm_errno = SHM_OK;
    failed_ = save() != 0;
    code_ = shm_errno;
    error_ = errno;
    if (code_ == SHM_OK) shm_errno = before;
  }
  // To be called last.
  void leaveCode() const {
    if (code_ == SHM_OK) return;
    shm_errno = code_;
    errno = error_;
  }
  // Of a setter, which a failed save fails after the rest of the change is done.
  [[nodiscard]] int result() const {
    leaveCode();
    return failed_ ? -1 : 0;
  }

 private:
  bool failed_ = false;
  uint32_t code_ = SHM_OK;
  int error_ = 0;
};

}  // namespace kestrove
