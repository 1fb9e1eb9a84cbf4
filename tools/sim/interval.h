// SPDX-License-Identifier: Apache-2.0
// The interval record that an engine reports, made from the ports' own counters.
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

struct IntervalRecord {
  uint32_t word[SHM_INTERVAL_WORDS] = {};
  uint32_t bytesToWan() const { return word[26]; }
};

// What crossed the ports in that many seconds. A stand-in compresses nothing, so what it sends is what it received.
IntervalRecord makeRecord(const InterfaceCounters& lan, const InterfaceCounters& wan, uint32_t seconds);

}  // namespace sim
