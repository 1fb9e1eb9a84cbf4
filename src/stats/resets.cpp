// SPDX-License-Identifier: Apache-2.0
// Every reset changes the store first and logs its events last; what becomes of an event changes no result.
#include <stddef.h>
#include <string.h>

#include "kestrove/codes.h"
#include "kestrove/events.h"
#include "kestrove/stats.h"
#include "stats/ratio.h"
#include "store/lock.h"
#include "store/user_name.h"
#include "sys/command.h"

namespace kestrove {
namespace {

constexpr char kRotateCacheLog[] = "/usr/local/squid/sbin/squid -k rotate  > /dev/null 2>& 1";
constexpr char kEmptyCacheLog[] = "/bin/cat /dev/null > /sda1/squidG2/log/access.log";

constexpr size_t kSessionEngineBytes = 68;
constexpr size_t kFirstPeak = offsetof(StatisticsBlock, intervalPeak14);
constexpr size_t kPeaksEnd = offsetof(StatisticsBlock, compressionRatio);
constexpr size_t kFurtherCounters = offsetof(StatisticsBlock, furtherCounters);

void zero(StatisticsBlock& block, size_t from, size_t to) {
  memset(reinterpret_cast<char*>(&block) + from, 0, to - from);
}

void zeroCompression(StatisticsBlock& block) {
  block.totalUncompressedDataSize = 0;
  block.totalCompressedDataSize = 0;
  block.compressionRatio = kRatioAfterReset;
}

void zeroFilter(StatisticsBlock& block) {
  block.filter_total_bytes_in = 0;
  block.filter_total_bytes_out = 0;
  block.filter_compression_ratio = kRatioAfterReset;
}

// The engine's last record, the filter's totals and its last value outlive this reset.
void zeroCounters(StatisticsBlock& block) {
  uint32_t uptime = 0;
  getSystemUptime(&uptime);  // 0 when it cannot be read
  block.accumulatedIntervals = 0;
  block.counterLastResetTime = uptime;
  zero(block, kFirstPeak, kPeaksEnd);
  zeroCompression(block);
  zero(block, kFurtherCounters, sizeof block);
}

void zeroQueue(QosRow& row) {
  int32_t priority = row.priority;
  row = {};
  row.priority = priority;
}

// With a de-duplication method set, the cache keeps its log. Where there is no cache the command fails, and nothing is
// lost by that.
void clearCacheLog() {
  if (shm->config.ddupOperState != 0) return;
  static_cast<void>(sys::runShell(shm->config.webCacheOperState == SHM_ON ? kRotateCacheLog : kEmptyCacheLog));
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int resetCompressionRatio(uint32_t source, const char* user) {
  StoreLock lock;
  if (!lock) return -1;
  zeroCompression(shm->statistics);
  logEvent(SHM_EVENT_COMPRESSION_RATIO_CLEARED, source, user);
  return 0;
}

int resetFilterStats(void) {
  StoreLock lock;
  if (!lock) return -1;
  zeroFilter(shm->statistics);
  return 0;
}

int resetStats(uint32_t source, const char* user) {
  StoreLock lock;
  if (!lock) return -1;
  UserName name(user);  // for both events
  zeroCounters(shm->statistics);
  for (QosRow& row : shm->qos) zeroQueue(row);
  logEvent(SHM_EVENT_SYSTEM_STATS_CLEARED, source, name.text());
  logEvent(SHM_EVENT_COMPRESSION_RATIO_CLEARED, source, name.text());
  return 0;
}

int resetOptimizationStats(uint32_t source, const char* user) {
  StoreLock lock;
  if (!lock) return -1;
  UserName name(user);  // for both events
  zeroCompression(shm->statistics);
  zeroFilter(shm->statistics);
  memset(&shm->sessionEngine, 0, kSessionEngineBytes);
  logEvent(SHM_EVENT_COMPRESSION_RATIO_CLEARED, source, name.text());
  clearCacheLog();
  logEvent(SHM_EVENT_OPTIMIZATION_STATS_CLEARED, source, name.text());
  return 0;
}
