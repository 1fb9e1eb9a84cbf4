// SPDX-License-Identifier: Apache-2.0
// Records of the engine and of the session engine, added to the store's counters.
#include <string.h>

#include "kestrove/stats.h"
#include "stats/fold.h"
#include "store/fail.h"
#include "store/lock.h"

namespace kestrove {
namespace {

constexpr size_t kSessionCounters = 8;
constexpr size_t kGaugePlace = kSessionCounters * sizeof(uint64_t);

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int shm_updateKestroveStats(const uint32_t record[180]) {
  if (!record) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  IntervalRecord words;  // one copy for all: a record that changes meanwhile must not be folded in two versions
  memcpy(words, record, sizeof words);
  foldInterval(shm->statistics, words);
  foldQueues(shm->qos, words);
  return 0;
}

// The caller's record holds the counters and, behind them, the gauge; it need not be aligned.
int updateDomoStats(void* record) {
  if (!record) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  SessionEngineStats& engine = shm->sessionEngine;
  uint64_t added[kSessionCounters];
  memcpy(added, record, sizeof added);
  for (size_t i = 0; i < kSessionCounters; ++i) engine.counter[i] += added[i];
  memset(record, 0, sizeof added);
  memcpy(&engine.sessions, static_cast<char*>(record) + kGaugePlace, sizeof engine.sessions);
  return 0;
}
