// SPDX-License-Identifier: Apache-2.0
#include "tools/sim/interval.h"

#include "kestrove/stats.h"

namespace sim {
namespace {

void fillRow(IntervalRecord& record, int row, const InterfaceCounters& port, uint32_t seconds) {
  uint32_t* words = record.word + kRows + kRowWords * row;
  putPair(words + kBytes, port.bytesSent);
  putPair(words + kPackets, port.packetsSent);
  putPair(words + kDrops, port.dropsSent);
  uint64_t rate = seconds == 0 ? 0 : port.bytesSent * 8 / seconds;
  words[kCurrentRate] = words[kAverageRate] = words[kMaximumRate] =
      rate > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(rate);
}

constexpr uint64_t InterfaceCounters::*kCounters[] = {
    &InterfaceCounters::bytesSent,       &InterfaceCounters::bytesReceived, &InterfaceCounters::packetsSent,
    &InterfaceCounters::packetsReceived, &InterfaceCounters::dropsSent,     &InterfaceCounters::dropsReceived};

uint64_t since(uint64_t now, uint64_t last) { return now < last ? 0 : now - last; }

}  // namespace

void PortCounters::watch(const std::string& name) {
  if (name == name_) return;
  name_ = name;
  known_ = false;
  advance();
}

InterfaceCounters PortCounters::advance() {
  InterfaceCounters now = {};
  InterfaceCounters passed = {};
  if (readInterfaceStats(&now, name_.c_str()) != 0) {
    known_ = false;
    return passed;
  }
  if (known_) {
    for (const auto counter : kCounters) passed.*counter = since(now.*counter, last_.*counter);
  }
  known_ = true;
  last_ = now;
  return passed;
}

IntervalRecord makeRecord(const InterfaceCounters& lan, const InterfaceCounters& wan, uint32_t seconds) {
  IntervalRecord record;
  uint32_t through = static_cast<uint32_t>(wan.bytesSent);
  record.word[kUncompressed] = record.word[kCompressed] = through;
  record.word[kFilterIn] = record.word[kFilterOut] = through;
  fillRow(record, kWanRow, wan, seconds);
  fillRow(record, kLanRow, lan, seconds);
  return record;
}

void countPorts(StatisticsBlock& statistics, const InterfaceCounters& lan, const InterfaceCounters& wan) {
  for (const auto counter : kCounters) {
    statistics.interfaceRow[0].*counter += lan.*counter;
    statistics.interfaceRow[1].*counter += wan.*counter;
  }
}

}  // namespace sim
