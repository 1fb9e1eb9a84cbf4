// The change bits that the engine fetches.
#pragma once

#include "kestrove/segment.h"

namespace kestrove {

enum PendingChange : uint32_t {
  kPendingLanRate = 1u << 0,
  kPendingWanRate = 1u << 1,
  kPendingLanMtu = 1u << 2,
  kPendingWanMtu = 1u << 3,
  kPendingCompression = 1u << 5,
  kPendingWanCongestion = 1u << 6,
  kPendingInterface = 1u << 6,
  kPendingRules = 1u << 7,
  kPendingItem38 = 1u << 10,
  kPendingManagement = 1u << 13,
  kPendingOpMode = 1u << 14
};

// Atomic, because callers that hold no lock mark changes, too (saveRuleTable).
inline void markPending(uint32_t bits) { __atomic_fetch_or(&shm->pendingChanges, bits, __ATOMIC_SEQ_CST); }
inline uint32_t takePending() { return __atomic_exchange_n(&shm->pendingChanges, 0u, __ATOMIC_SEQ_CST); }

}  // namespace kestrove
