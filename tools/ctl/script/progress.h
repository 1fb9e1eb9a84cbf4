// SPDX-License-Identifier: Apache-2.0
// A bar for work that takes a while, on a terminal alone.
#pragma once

#include <chrono>
#include <cstddef>

namespace ctl {

class Progress {
 public:
  Progress();
  ~Progress() { end(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Nothing is shown in the first half second.
  void show(size_t done, size_t all);
  // Takes the bar away.
  void end();

 private:
  using Clock = std::chrono::steady_clock;

  bool terminal_;
  bool shown_ = false;
  Clock::time_point next_;
};

}  // namespace ctl
