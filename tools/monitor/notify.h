// SPDX-License-Identifier: Apache-2.0
// What a service tells its manager.
#pragma once

#include <string>

#include "tools/monitor/clock.h"

namespace monitor {

// Reads NOTIFY_SOCKET, WATCHDOG_USEC and WATCHDOG_PID and takes them out of the environment: tasks do not speak for the
// monitor. Without a manager nothing is said.
class Manager {
 public:
  Manager();
  void tell(const char* words) const;
  // That the loop goes round, four times in each span of the watchdog.
  void alive(Milliseconds now);
  // How long the loop may sleep for the watchdog's sake.
  Milliseconds pause() const { return span_; }

 private:
  std::string path_;
  Milliseconds span_ = kNever;
  Milliseconds next_ = 0;
};

}  // namespace monitor
