// SPDX-License-Identifier: Apache-2.0
#include "stats/fold.h"

#include <string.h>

#include <algorithm>

#include "stats/ratio.h"

namespace kestrove {
namespace {

int32_t asSigned(uint32_t word) { return static_cast<int32_t>(word); }

// Engine counters of 32 bits may be negative; the totals take their sign along.
uint64_t signExtended(uint32_t word) { return static_cast<uint64_t>(int64_t{asSigned(word)}); }

// The members of the packed block are no targets of references in every build, so peaks and totals go by value.
int32_t peak(int32_t before, uint32_t word) { return std::max(before, asSigned(word)); }

int32_t peakPerSecond(int32_t before, uint32_t word, int32_t seconds) {
  if (seconds == 0) return before;
  int64_t rate = int64_t{asSigned(word)} / seconds;
  return rate > INT32_MAX ? before : std::max(before, static_cast<int32_t>(rate));
}

void foldPeaks(StatisticsBlock& block, const IntervalRecord& record) {
  int32_t seconds = block.accumulationInterval;
  block.intervalPeak14 = peak(block.intervalPeak14, record[14]);
  block.intervalPeak42 = peak(block.intervalPeak42, record[42]);
  block.maxTcpSessionInitiationsPerSecond = peakPerSecond(block.maxTcpSessionInitiationsPerSecond, record[43], seconds);
  block.maxTcpSessionTerminationsPerSecond =
      peakPerSecond(block.maxTcpSessionTerminationsPerSecond, record[44], seconds);
}

void foldTotals(StatisticsBlock& block, const IntervalRecord& record) {
  block.intervalTotals[0] += signExtended(record[18]);
  block.intervalTotals[1] += signExtended(record[19]);
  block.intervalTotals[2] += signExtended(record[22]);
  block.intervalTotals[3] += signExtended(record[20]);
  block.totalTcpSessionRequestsFailed += signExtended(record[21]);
  block.totalTcpSessionsTimedOut += signExtended(record[23]);
  block.totalTcpSegmentsBadChecksum += signExtended(record[24]);
}

// With nothing to compress the ratio stays what it was; with nothing to filter it becomes that of a reset.
void foldRatios(StatisticsBlock& block, const IntervalRecord& record) {
  block.totalUncompressedDataSize += record[25];
  block.totalCompressedDataSize += record[26];
  block.compressionRatio =
      ratioOr(block.compressionRatio, block.totalCompressedDataSize, block.totalUncompressedDataSize);
  block.filter_total_bytes_in += record[27];
  block.filter_total_bytes_out += record[28];
  block.filter_compression_ratio = ratioOr(kRatioAfterReset, block.filter_total_bytes_out, block.filter_total_bytes_in);
  block.filterLastValue = record[29];
}

uint64_t pairAt(const uint32_t* word) { return uint64_t{word[1]} << 32 | word[0]; }

// The last words of a queue's row are reserved.
void foldQueue(QosRow& row, const uint32_t* word) {
  row.priority = asSigned(word[0]);
  row.bytesSent += pairAt(word + 1);
  row.packetsSent += pairAt(word + 3);
  row.packetsDropped += pairAt(word + 5);
  row.currentRate = word[7];
  row.averageRate = word[8];
  row.maximumRate = word[9] > row.maximumRate ? word[9] : row.maximumRate;
  row.sessions = word[10];
}

}  // namespace

void foldInterval(StatisticsBlock& block, const IntervalRecord& record) {
  block.accumulatedIntervals += 1;
  memcpy(block.intervalRecord, record, sizeof block.intervalRecord);
  foldPeaks(block, record);
  foldTotals(block, record);
  foldRatios(block, record);
}

void foldQueues(QosRow (&rows)[SHM_QOS_ROWS], const IntervalRecord& record) {
  const uint32_t* word = record + kQueueWord;
  for (QosRow& row : rows) {
    foldQueue(row, word);
    word += kQueueWords;
  }
}

}  // namespace kestrove
