// SPDX-License-Identifier: Apache-2.0
// Copies of the counters, taken under the lock.
#include <stddef.h>
#include <string.h>

#include "kestrove/stats.h"
#include "stats/fold.h"
#include "store/fail.h"
#include "store/lock.h"

namespace kestrove {
namespace {

constexpr size_t kOperationalBytes = 956;
constexpr size_t kDomoBytes = 68;

static_assert(offsetof(StatisticsBlock, interfaceRow) == 1052, "the rows of the interfaces have a fixed place");
static_assert(sizeof(QosRow) * SHM_QOS_ROWS == 440 && sizeof(InterfaceCounters) == 48);

// What to copy is found under the lock only: before it the store need not be attached.
template <class Find>
[[nodiscard]] int copyLocked(void* out, size_t size, Find find) {
  if (!out) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  memcpy(out, find(), size);
  return 0;
}

bool within(int index, size_t rows) { return index >= 0 && static_cast<size_t>(index) < rows; }

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int readOperationalStats(void* out) {
  return copyLocked(out, kOperationalBytes, [] { return static_cast<const void*>(&shm->statistics); });
}

int readQosStats(void* out) {
  return copyLocked(out, sizeof shm->qos, [] { return static_cast<const void*>(shm->qos); });
}

int readDomoStats(void* out) {
  return copyLocked(out, kDomoBytes, [] { return static_cast<const void*>(&shm->sessionEngine); });
}

int getQueueIntervalStats(int index, void* out) {
  if (!within(index, SHM_QOS_ROWS)) return fail(SHM_EINVAL);
  return copyLocked(out, kQueueWords * sizeof(uint32_t), [index] {
    size_t word = kQueueWord + kQueueWords * static_cast<size_t>(index);
    return static_cast<const void*>(shm->statistics.intervalRecord + word);
  });
}

int getInterfaceStats(int index, void* out) {
  constexpr size_t kRows = sizeof shm->statistics.interfaceRow / sizeof(InterfaceCounters);
  if (!within(index, kRows)) return fail(SHM_EINVAL);
  return copyLocked(out, sizeof(InterfaceCounters),
                    [index] { return static_cast<const void*>(&shm->statistics.interfaceRow[index]); });
}

uint64_t checkStatsCounter(void) {
  StoreLock lock;
  return lock ? shm->statistics.accumulatedIntervals : 0;
}

uint32_t getLastResetTimeStamp(void) {
  StoreLock lock;
  return lock ? shm->statistics.counterLastResetTime : UINT32_MAX;
}
