// SPDX-License-Identifier: Apache-2.0
// The tables of the store as they were, for an interrupt in the middle of a load.
#pragma once

#include <signal.h>

#include <cstddef>

namespace ctl {

// For a process that holds the lock. While this lives, a signal that would end the process first puts back whatever a
// configuration file can change: the configuration record, the tables of addresses, routes and rules, and the state.
class TablesBack {
 public:
  TablesBack();
  ~TablesBack();
  TablesBack(const TablesBack&) = delete;
  TablesBack& operator=(const TablesBack&) = delete;

  static constexpr int kSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};
  static constexpr size_t kSignalCount = sizeof kSignals / sizeof kSignals[0];

 private:
  struct sigaction before_[kSignalCount] = {};
};

}  // namespace ctl
