// SPDX-License-Identifier: Apache-2.0
// Sleeps until something happens: the end of a process, a datagram, a signal, or a time.
#pragma once

#include "sys/descriptor.h"
#include "tools/monitor/clock.h"

namespace monitor {

class Loop {
 public:
  // SIGTERM and SIGINT are told from now on instead of ending the process.
  Loop();
  explicit operator bool() const { return events_ && signals_; }
  // Wakes up when it can be read, until it is closed.
  void watch(int descriptor) const;
  void sleep(Milliseconds longest) const;
  // Whether the process was told to end.
  bool toldToEnd() const;

 private:
  kestrove::sys::Descriptor events_;
  kestrove::sys::Descriptor signals_;
};

}  // namespace monitor
