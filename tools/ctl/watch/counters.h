// SPDX-License-Identifier: Apache-2.0
// The counters of the store at one moment, and the table of those whose rates are shown.
#pragma once

#include <span>

#include "kestrove/layout.h"
#include "tools/ctl/session.h"

namespace ctl {

struct Counters {
  double at = 0;  // of a steady clock, in seconds
  StatisticsBlock statistics = {};
  QosRow qos[SHM_QOS_ROWS] = {};
  SessionEngineStats sessionEngine = {};
};

// Copied under the lock.
Counters readCounters(const Session& session);

enum class Unit { kBytes, kPackets, kSessions };

// Whose time a counter goes by: the engine reports in one piece what an interval brought.
enum class Pace { kEngine, kClock };

struct CounterRow {
  const char* name;   // in JSON and in lines
  const char* label;  // in the table
  Unit unit;
  Pace pace;
  uint64_t (*read)(const Counters&);
};

std::span<const CounterRow> counterRows();

struct GaugeRow {
  const char* name;
  const char* label;
  int64_t (*read)(const Counters&);
};

std::span<const GaugeRow> gaugeRows();

}  // namespace ctl
