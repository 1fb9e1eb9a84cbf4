// SPDX-License-Identifier: Apache-2.0
// The archive of a saved state.
#pragma once

#include <stdint.h>

namespace kestrove {

// Gathers the files, packs them and logs the event. 0 or -1. The caller holds the lock.
[[nodiscard]] int makeArchive(const char* timestamp, uint32_t source, const char* user);

}  // namespace kestrove
