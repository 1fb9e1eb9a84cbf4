// SPDX-License-Identifier: Apache-2.0
// The change bits that the engine fetches, SHM_CHANGE_*.
#pragma once

#include "kestrove/codes.h"
#include "kestrove/segment.h"

namespace kestrove {

// Atomic, because callers that hold no lock mark changes, too (saveRuleTable).
inline void markPending(uint32_t bits) { __atomic_fetch_or(&shm->pendingChanges, bits, __ATOMIC_SEQ_CST); }
inline uint32_t takePending() { return __atomic_exchange_n(&shm->pendingChanges, 0u, __ATOMIC_SEQ_CST); }

}  // namespace kestrove
