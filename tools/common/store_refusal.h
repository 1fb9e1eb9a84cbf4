// SPDX-License-Identifier: Apache-2.0
// Why a program cannot use the store.
#pragma once

#include <sys/shm.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "kestrove/errors.h"
#include "kestrove/segment.h"

namespace tools {

// The reason for which no segment of the store's key and size can be attached, and the sentence for it. Finding one
// asks for no right, attaching it does.
inline int segmentError() {
  const int segment = shmget(SHM_KEY, SHM_SIZE, 0);
  const void* store = segment == -1 ? nullptr : shmat(segment, nullptr, 0);
  if (segment == -1 || store == reinterpret_cast<void*>(-1)) return errno;
  shmdt(store);
  return ENOENT;  // it came meanwhile
}
inline std::string segmentRefusal(int error) {
  if (error == ENOENT) return "there is no store (shm-init builds it)";
  if (error == EINVAL) return "the segment under the store's key is no store";
  return std::string("the store: ") + strerror(error);
}

// Behind a lock that could not be had, and before anything else is called: a sentence.
inline std::string storeRefusal() {
  int error = errno;
  if (shm_errno != SHM_EATTACH) return std::string(shm_strerror(static_cast<int>(shm_errno))) + ": " + strerror(error);
  if (shmget(SHM_KEY, SHM_SIZE, 0) == -1) error = errno;
  return segmentRefusal(error);
}

}  // namespace tools
