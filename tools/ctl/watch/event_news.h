// SPDX-License-Identifier: Apache-2.0
// What has come into the event log between two looks at it.
#pragma once

#include <cstdint>

#include "kestrove/layout.h"

namespace ctl {

struct EventNews {
  uint32_t count = 0;    // the newest so many are new
  bool emptied = false;  // the log was cleared meanwhile: all that it holds is new
  bool missed = false;   // the ring went round: older new ones are gone
};

// The log does not say what became of it: whether it went on is seen by its older records, which stay as they are
// until the ring reaches them.
EventNews newsSince(const EventLog& before, const EventLog& now);

}  // namespace ctl
