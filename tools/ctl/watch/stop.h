// SPDX-License-Identifier: Apache-2.0
// Watching goes on until it is stopped by Ctrl-C, which is its ordinary end.
#pragma once

#include <signal.h>

namespace ctl {

// While it lives an interrupt is noted instead of ending the program.
class Stop {
 public:
  Stop();
  ~Stop();
  Stop(const Stop&) = delete;
  Stop& operator=(const Stop&) = delete;

  bool asked() const;
  // Waits so long, or until an interrupt comes. Whether none came.
  bool pause(double seconds) const;

 private:
  struct sigaction before_ = {};
  sigset_t mask_;
};

}  // namespace ctl
