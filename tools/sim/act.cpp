// SPDX-License-Identifier: Apache-2.0
#include "tools/sim/act.h"

#include <algorithm>

namespace sim {
namespace {

constexpr uint64_t kLeftOf[] = {2, 5};                             // of what came, after compression
constexpr uint64_t kShareOf256[] = {128, 64, 32, 16, 8, 4, 2, 2};  // the WAN's classes 1 to 8
constexpr uint64_t kPacketsOfASession = 200;
constexpr uint64_t kFullPercent = 90;  // of the link rate: from here on packets are dropped
constexpr uint64_t kPacketsOfADrop = 100;

uint32_t narrow(uint64_t value) { return static_cast<uint32_t>(std::min<uint64_t>(value, UINT32_MAX)); }

uint32_t* rowOf(IntervalRecord& record, int row) { return record.word + kRows + kRowWords * row; }

void share(uint32_t* words, const uint32_t* all, uint64_t part) {
  for (const int field : {kBytes, kPackets, kDrops}) putPair(words + field, pairAt(all + field) * part / 256);
  for (const int field : {kCurrentRate, kAverageRate, kMaximumRate, kSessions}) {
    words[field] = narrow(all[field] * part / 256);
  }
}

void compress(IntervalRecord& record) {
  uint32_t* wan = rowOf(record, kWanRow);
  record.word[kCompressed] = narrow(record.word[kUncompressed] * kLeftOf[0] / kLeftOf[1]);
  record.word[kFilterOut] = narrow(record.word[kFilterIn] * kLeftOf[0] / kLeftOf[1]);
  putPair(wan + kBytes, pairAt(wan + kBytes) * kLeftOf[0] / kLeftOf[1]);
  for (const int field : {kCurrentRate, kAverageRate, kMaximumRate}) {
    wan[field] = narrow(wan[field] * kLeftOf[0] / kLeftOf[1]);
  }
}

void countSessions(IntervalRecord& record) {
  for (const int row : {kWanRow, kLanRow}) {
    uint32_t* words = rowOf(record, row);
    const uint64_t packets = pairAt(words + kPackets);
    words[kSessions] = packets == 0 ? 0 : narrow(1 + packets / kPacketsOfASession);
  }
}

void drop(IntervalRecord& record, uint64_t linkRate) {
  uint32_t* wan = rowOf(record, kWanRow);
  if (wan[kCurrentRate] * uint64_t{100} < linkRate * kFullPercent) return;
  putPair(wan + kDrops, pairAt(wan + kDrops) + pairAt(wan + kPackets) / kPacketsOfADrop);
}

}  // namespace

void act(IntervalRecord& record, const EngineConfiguration& settings) {
  if (settings.compression == 1) compress(record);
  countSessions(record);
  drop(record, settings.wan.linkRate);
  for (int row = kWanRow + 1; row < kLanRow; ++row) {
    uint32_t* words = rowOf(record, row);
    share(words, rowOf(record, kWanRow), kShareOf256[row - 1]);
    words[kPriority] = static_cast<uint32_t>(row);
  }
}

SessionEngineStats sessionRecord(const InterfaceCounters& lan, const InterfaceCounters& wan,
                                 const IntervalRecord& record) {
  return {{lan.bytesSent, lan.bytesReceived, lan.packetsSent, lan.packetsReceived, wan.bytesSent, wan.bytesReceived,
           wan.packetsSent, wan.packetsReceived},
          static_cast<int32_t>(record.word[kRows + kRowWords * kWanRow + kSessions]),
          {}};
}

}  // namespace sim
