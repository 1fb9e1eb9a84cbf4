// SPDX-License-Identifier: Apache-2.0
// The one way to fail: set the code, return -1.
#pragma once

#include "kestrove/errors.h"
#include "kestrove/segment.h"

namespace kestrove {

inline int fail(int code) {
  shm_errno = static_cast<uint32_t>(code);
  return -1;
}

}  // namespace kestrove
