// SPDX-License-Identifier: Apache-2.0
// The event log as JSON, and as lines for a reader.
#pragma once

#include <optional>

#include "tools/ctl/session.h"

namespace ctl {

// How many events the attached store's log holds. For a caller that holds the lock, as the others here.
uint32_t eventCount();

// {"time", "type", "source", "user", "description"} of an event, 0 the oldest.
Json eventRow(uint32_t index);

// The library's line of it.
std::string eventLine(uint32_t index);

}  // namespace ctl
