// SPDX-License-Identifier: Apache-2.0
// A clock that nobody sets.
#pragma once

#include <ctime>

namespace tools {

inline double steadySeconds() {
  struct timespec time = {};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

}  // namespace tools
