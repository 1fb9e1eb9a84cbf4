// SPDX-License-Identifier: Apache-2.0
// The counters' rates as they change.
#pragma once

#include "tools/ctl/session.h"

namespace ctl {

struct WatchLine {
  double seconds = 1;  // between two samples
  int samples = 0;     // 0: until an interrupt
};

// On a terminal a table that is drawn anew; otherwise a line a sample, with --json an object a line.
void watchStats(const Session& session, const WatchLine& line);

}  // namespace ctl
