// SPDX-License-Identifier: Apache-2.0
// Counters and tasks.
#include <stddef.h>

#include "dump/fields.h"
#include "dump/print.h"
#include "dump/sections.h"
#include "store/codes.h"

namespace kestrove {
namespace {

constexpr size_t kColumn = 40;
constexpr int kLanQueue = 9;
constexpr int kWanTotal = 0;

#define COUNTER(name, kind) \
  { #name, DumpKind::kind, offsetof(ShmData, statistics.name), sizeof(StatisticsBlock::name) }

constexpr DumpField kCounters[] = {
    COUNTER(counterLastResetTime, kUnsigned),
    COUNTER(accumulationInterval, kUnsigned),
    COUNTER(accumulatedIntervals, kWide),
    COUNTER(maxTcpSessionInitiationsPerSecond, kSigned),
    COUNTER(maxTcpSessionTerminationsPerSecond, kSigned),
    COUNTER(totalTcpSessionRequestsFailed, kWide),
    COUNTER(totalTcpSessionsTimedOut, kWide),
    COUNTER(totalTcpSegmentsBadChecksum, kWide),
    COUNTER(totalUncompressedDataSize, kWide),
    COUNTER(totalCompressedDataSize, kWide),
    COUNTER(filter_total_bytes_in, kWide),
    COUNTER(filter_total_bytes_out, kWide),
    COUNTER(compressionRatio, kUnsigned),
    COUNTER(filter_compression_ratio, kUnsigned),
};

#undef COUNTER

long long shown(uint64_t counter) { return static_cast<long long>(counter); }

void dumpInterface(sys::TextWriter& out, const char* name, const InterfaceCounters& row) {
  print(out, "%4s: %18lld %18lld %12lld %12lld %10lld %10lld \n", name, shown(row.bytesSent), shown(row.bytesReceived),
        shown(row.packetsSent), shown(row.packetsReceived), shown(row.dropsSent), shown(row.dropsReceived));
}

void dumpQueue(sys::TextWriter& out, const QosRow& row) {
  print(out, "%5d %15lld %15lld %15lld %10u %10u %10u %5u\n", row.priority, shown(row.bytesSent),
        shown(row.packetsSent), shown(row.packetsDropped), row.currentRate, row.averageRate, row.maximumRate,
        row.sessions);
}

// The counters of one side, four from the given one on.
void dumpSessionRow(sys::TextWriter& out, const char* name, const SessionEngineStats& engine, int first) {
  print(out, "%4s: %18lld %18lld %18lld %18lld\n", name, shown(engine.counter[first]), shown(engine.counter[first + 1]),
        shown(engine.counter[first + 2]), shown(engine.counter[first + 3]));
}

}  // namespace

void dumpOperationalStats(sys::TextWriter& out) { dumpFields(out, kCounters, kColumn); }

void dumpInterfaceStats(sys::TextWriter& out) {
  print(out, "%4s  %18s %18s %12s %12s %10s %10s\n", "i/f", "bytes: tx", "rx", "packet: tx", "rx", "drops: tx", "rx");
  dumpInterface(out, "Lan", shm->statistics.interfaceRow[0]);
  dumpInterface(out, "Wan", shm->statistics.interfaceRow[1]);
}

void dumpQosStats(sys::TextWriter& out) {
  constexpr char kHeading[] = "%5s %15s %15s %15s %10s %10s %10s %5s\n";
  print(out, kHeading, "", "bytes", "packets", "packets", "current", "average", "maximum", "");
  print(out, kHeading, "prio", "sent", "sent", "dropped", "rate", "rate", "rate", "sess");
  out.text("LAN: \n");
  dumpQueue(out, shm->qos[kLanQueue]);
  out.text("WAN: \n");
  for (int row = kWanTotal + 1; row < kLanQueue; ++row) dumpQueue(out, shm->qos[row]);
  out.text("Total WAN:\n");
  dumpQueue(out, shm->qos[kWanTotal]);
}

void dumpTasks(sys::TextWriter& out) {
  for (int task = 0; task < SHM_TASKS; ++task) {
    print(out, "   %s:\t[%d]\n", shm_getMessage(&kTaskNames, task), shm->taskPids[task]);
  }
}

void dumpSessionEngine(sys::TextWriter& out) {
  const SessionEngineStats& engine = shm->sessionEngine;
  print(out, "Num Sessions: %d\n", engine.sessions);
  print(out, "%4s  %18s %18s %18s %18s\n", "i/f", "bytes: tx", "rx", "packet: tx", "rx");
  dumpSessionRow(out, "Lan", engine, 0);
  dumpSessionRow(out, "Wan", engine, 4);
}

}  // namespace kestrove
