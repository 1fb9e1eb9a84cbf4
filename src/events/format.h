// SPDX-License-Identifier: Apache-2.0
// One event as a line of text.
#pragma once

#include "kestrove/layout.h"

namespace kestrove {

enum EventLayout { kListLayout = 1, kCommaLayout = 2, kNarrowLayout = 3 };

// Writes the record's line, terminated, into the buffer; every layout but the two named ones is that of the list. The
// number of characters written, cut to size - 1; 0 for a size of 0. -1 with code 3 when the size is negative or the
// buffer null, with code 2 when the time cannot be broken down.
[[nodiscard]] int formatEventRecord(const EventRecord& record, char* buffer, int size, int layout);

}  // namespace kestrove
