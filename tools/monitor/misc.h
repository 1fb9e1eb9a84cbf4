// SPDX-License-Identifier: Apache-2.0
// The task "miscMonitor", in a process of its own: what may wait for a disk, or for the lock, never holds up the one
// that starts what has died.
#pragma once

#include "tools/monitor/options.h"

namespace monitor {

// Takes records, writes metrics and looks after unsaved and unconfirmed changes until it is told to end.
Exit runMisc(const Options& options);

}  // namespace monitor
