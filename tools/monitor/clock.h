// SPDX-License-Identifier: Apache-2.0
// Times of a clock that nobody sets, and delays that grow.
#pragma once

#include <algorithm>
#include <cstdint>
#include <ctime>

namespace monitor {

using Milliseconds = int64_t;

constexpr Milliseconds kNever = INT64_MAX;

inline Milliseconds clockNow() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return Milliseconds{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

// Doubles with every step up to a limit.
class Delay {
 public:
  Delay(Milliseconds first, Milliseconds most) : first_(first), most_(most), next_(first) {}
  Milliseconds next() {
    const Milliseconds delay = std::min(next_, most_);
    next_ = std::min(delay * 2, most_);
    return delay;
  }
  void reset() { next_ = first_; }

 private:
  Milliseconds first_;
  Milliseconds most_;
  Milliseconds next_;
};

}  // namespace monitor
