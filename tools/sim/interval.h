// SPDX-License-Identifier: Apache-2.0
// What an engine reports once an interval, made from the ports' own counters: a record, and what the ports passed.
#pragma once

#include <string>

#include "kestrove/layout.h"

namespace sim {

// A port between two readings. A port that is missing, or that came back, counts nothing.
class PortCounters {
 public:
  // Counts this port from now on; nothing changes when it is the one already watched.
  void watch(const std::string& name);
  // The traffic since the last call or the beginning of the watch.
  InterfaceCounters advance();

 private:
  std::string name_;
  InterfaceCounters last_ = {};
  bool known_ = false;
};

// Places in the record, and in each of its rows: the WAN, its eight classes, the LAN.
enum RecordWord { kUncompressed = 25, kCompressed = 26, kFilterIn = 27, kFilterOut = 28, kRows = 30, kRowWords = 15 };
enum RowWord {
  kPriority = 0,
  kBytes = 1,
  kPackets = 3,
  kDrops = 5,
  kCurrentRate = 7,
  kAverageRate = 8,
  kMaximumRate = 9,
  kSessions = 10
};
constexpr int kWanRow = 0;
constexpr int kLanRow = 9;

struct IntervalRecord {
  uint32_t word[SHM_INTERVAL_WORDS] = {};
  uint32_t bytesToWan() const { return word[kCompressed]; }
};

inline void putPair(uint32_t* words, uint64_t value) {
  words[0] = static_cast<uint32_t>(value);
  words[1] = static_cast<uint32_t>(value >> 32);
}
inline uint64_t pairAt(const uint32_t* words) { return uint64_t{words[1]} << 32 | words[0]; }

// What crossed the ports in that many seconds. A stand-in compresses nothing, so what it sends is what it received.
IntervalRecord makeRecord(const InterfaceCounters& lan, const InterfaceCounters& wan, uint32_t seconds);

// Adds it to the store's counters of the ports, both directions. The caller has the lock.
void countPorts(StatisticsBlock& statistics, const InterfaceCounters& lan, const InterfaceCounters& wan);

}  // namespace sim
