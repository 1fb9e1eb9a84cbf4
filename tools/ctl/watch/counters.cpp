// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/watch/counters.h"

#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/common/steady_clock.h"
#include "tools/ctl/watch/packed_field.h"

namespace ctl {
namespace {

constexpr int kWan = 0;  // rows of the queues
constexpr int kLan = 9;
constexpr int kLanPort = 0;  // rows of the ports
constexpr int kWanPort = 1;

template <int row, uint64_t QosRow::*field>
uint64_t queue(const Counters& counters) {
  return fieldOf(counters.qos[row], field);
}

template <int row, uint64_t InterfaceCounters::*field>
uint64_t port(const Counters& counters) {
  return fieldOf(counters.statistics.interfaceRow[row], field);
}

template <uint64_t StatisticsBlock::*field>
uint64_t total(const Counters& counters) {
  return fieldOf(counters.statistics, field);
}

template <int row>
int64_t sessions(const Counters& counters) {
  return counters.qos[row].sessions;
}

int64_t engineSessions(const Counters& counters) { return counters.sessionEngine.sessions; }

constexpr CounterRow kCounters[] = {
    {"wanBytes", "WAN", Unit::kBytes, Pace::kEngine, queue<kWan, &QosRow::bytesSent>},
    {"wanPackets", "WAN", Unit::kPackets, Pace::kEngine, queue<kWan, &QosRow::packetsSent>},
    {"wanDrops", "WAN dropped", Unit::kPackets, Pace::kEngine, queue<kWan, &QosRow::packetsDropped>},
    {"lanBytes", "LAN", Unit::kBytes, Pace::kEngine, queue<kLan, &QosRow::bytesSent>},
    {"lanPackets", "LAN", Unit::kPackets, Pace::kEngine, queue<kLan, &QosRow::packetsSent>},
    {"lanDrops", "LAN dropped", Unit::kPackets, Pace::kEngine, queue<kLan, &QosRow::packetsDropped>},
    {"uncompressedBytes", "uncompressed", Unit::kBytes, Pace::kEngine,
     total<&StatisticsBlock::totalUncompressedDataSize>},
    {"compressedBytes", "compressed", Unit::kBytes, Pace::kEngine, total<&StatisticsBlock::totalCompressedDataSize>},
    {"filterBytesIn", "filter in", Unit::kBytes, Pace::kEngine, total<&StatisticsBlock::filter_total_bytes_in>},
    {"filterBytesOut", "filter out", Unit::kBytes, Pace::kEngine, total<&StatisticsBlock::filter_total_bytes_out>},
    {"sessionsFailed", "sessions failed", Unit::kSessions, Pace::kEngine,
     total<&StatisticsBlock::totalTcpSessionRequestsFailed>},
    {"sessionsTimedOut", "sessions timed out", Unit::kSessions, Pace::kEngine,
     total<&StatisticsBlock::totalTcpSessionsTimedOut>},
    {"badChecksums", "bad checksums", Unit::kPackets, Pace::kEngine,
     total<&StatisticsBlock::totalTcpSegmentsBadChecksum>},
    {"wanPortBytesSent", "WAN port sent", Unit::kBytes, Pace::kClock, port<kWanPort, &InterfaceCounters::bytesSent>},
    {"wanPortBytesReceived", "WAN port received", Unit::kBytes, Pace::kClock,
     port<kWanPort, &InterfaceCounters::bytesReceived>},
    {"lanPortBytesSent", "LAN port sent", Unit::kBytes, Pace::kClock, port<kLanPort, &InterfaceCounters::bytesSent>},
    {"lanPortBytesReceived", "LAN port received", Unit::kBytes, Pace::kClock,
     port<kLanPort, &InterfaceCounters::bytesReceived>}};

constexpr GaugeRow kGauges[] = {{"wanSessions", "WAN sessions", sessions<kWan>},
                                {"lanSessions", "LAN sessions", sessions<kLan>},
                                {"engineSessions", "engine sessions", engineSessions}};

}  // namespace

Counters readCounters(const Session& session) {
  Counters counters;
  awaitLock(session);
  const tools::Hold hold;
  if (!hold) throw refusal("the store cannot be locked");
  memcpy(&counters.statistics, &shm->statistics, sizeof counters.statistics);
  memcpy(counters.qos, shm->qos, sizeof counters.qos);
  memcpy(&counters.sessionEngine, &shm->sessionEngine, sizeof counters.sessionEngine);
  counters.at = tools::steadySeconds();
  return counters;
}

std::span<const CounterRow> counterRows() { return kCounters; }

std::span<const GaugeRow> gaugeRows() { return kGauges; }

}  // namespace ctl
