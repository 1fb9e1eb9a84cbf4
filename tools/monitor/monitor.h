// SPDX-License-Identifier: Apache-2.0
// The task "monitor": watches all others.
#pragma once

#include <list>

#include "tools/monitor/notify.h"
#include "tools/monitor/options.h"

namespace monitor {

class Monitor {
 public:
  explicit Monitor(const Options& options);

  // Until it is told to end.
  Exit run();

 private:
  void look(Milliseconds now);
  void lookAtStore();
  void lookAtOwnSlot();
  void logWhatIsDue();
  void logOnce(bool& due, uint32_t event);
  Milliseconds pause(Milliseconds now) const;
  void leave();

  Manager manager_;
  Loop loop_;
  Store store_;
  Notes notes_;
  Surroundings around_;
  std::list<Task> tasks_;
  Task* misc_ = nullptr;
  bool registered_ = false;
  bool restartDue_ = false;
  bool miscDue_ = false;
};

}  // namespace monitor
