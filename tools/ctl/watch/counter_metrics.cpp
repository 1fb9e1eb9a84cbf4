// SPDX-License-Identifier: Apache-2.0
// Metrics of what is counted: by the engine, for each queue, at the ports.
#include <array>

#include "kestrove/kestrove.h"
#include "tools/ctl/watch/metric_tables.h"
#include "tools/ctl/watch/packed_field.h"

namespace ctl {
namespace {

constexpr double kPercent = 100;
constexpr double kHundredths = 100;

const StatisticsBlock& statisticsOf(const MetricFacts& facts) { return (*facts.store)->statistics; }

template <auto StatisticsBlock::*field>
void plain(const MetricFacts& facts, Metrics& out) {
  out.add(fieldOf(statisticsOf(facts), field));
}

template <uint32_t StatisticsBlock::*field>
void ratio(const MetricFacts& facts, Metrics& out) {
  out.add(fieldOf(statisticsOf(facts), field) / kPercent);
}

void resetAt(const MetricFacts& facts, Metrics& out) {
  out.add(statisticsOf(facts).counterLastResetTime / kHundredths);
}

std::string queueName(size_t row) {
  if (row == 0) return "wan";
  return row == SHM_QOS_ROWS - 1 ? "lan" : "wan_" + std::to_string(row);
}

// A metric for each queue: "wan" is all of the WAN, "wan_1" to "wan_8" are its classes.
template <auto QosRow::*field>
void queues(const MetricFacts& facts, Metrics& out) {
  for (size_t row = 0; row < SHM_QOS_ROWS; ++row) {
    out.add(fieldOf((*facts.store)->qos[row], field), {{"queue", queueName(row)}});
  }
}

using PortField = uint64_t InterfaceCounters::*;

void bothWays(Metrics& out, const InterfaceCounters& counters, PortField sent, PortField received, Labels labels) {
  Labels in = labels;
  labels.emplace_back("direction", "sent");
  in.emplace_back("direction", "received");
  out.add(fieldOf(counters, sent), std::move(labels));
  out.add(fieldOf(counters, received), std::move(in));
}

template <PortField sent, PortField received>
void ports(const MetricFacts& facts, Metrics& out) {
  bothWays(out, statisticsOf(facts).interfaceRow[0], sent, received, {{"port", "lan"}});
  bothWays(out, statisticsOf(facts).interfaceRow[1], sent, received, {{"port", "wan"}});
}

// What the kernel counted, of those ports that it has.
template <PortField sent, PortField received>
void devices(const MetricFacts& facts, Metrics& out) {
  const ConfigRecord& config = (*facts.store)->config;
  const std::pair<const char*, std::string> kPorts[] = {{"lan", text(config.bridgeRouterPhysicalName)},
                                                        {"wan", text(config.physicalWanInterfaceName)},
                                                        {"management", text(config.managementInterfaceName)}};
  for (const auto& [port, name] : kPorts) {
    InterfaceCounters counters = {};
    if (name.empty() || readInterfaceStats(&counters, name.c_str()) != 0) continue;
    bothWays(out, counters, sent, received, {{"port", port}, {"device", name}});
  }
}

// Bytes and packets of each side, as the session engine numbers them.
void sessionEngine(const MetricFacts& facts, Metrics& out) {
  constexpr size_t kOfASide = 4;
  const SessionEngineStats& stats = (*facts.store)->sessionEngine;
  constexpr size_t kCounters = sizeof stats.counter / sizeof stats.counter[0];  // a packed array takes no reference
  for (size_t i = 0; i < kCounters; ++i) {
    out.add(+stats.counter[i], {{"side", i < kOfASide ? "lan" : "wan"}, {"number", std::to_string(i % kOfASide)}});
  }
}

void engineSessions(const MetricFacts& facts, Metrics& out) { out.add(+(*facts.store)->sessionEngine.sessions); }

using Block = StatisticsBlock;
using Port = InterfaceCounters;

constexpr MetricFamily kFamilies[] = {
    {"kestrove_report_interval_seconds", "gauge", "Time that a report of the engine spans.",
     plain<&Block::accumulationInterval>},
    {"kestrove_reports_total", "counter", "Reports of the engine since the last reset.",
     plain<&Block::accumulatedIntervals>},
    {"kestrove_counters_reset_uptime_seconds", "gauge", "Uptime at which the counters were last reset.", resetAt},
    {"kestrove_uncompressed_bytes_total", "counter", "Data that came to be compressed.",
     plain<&Block::totalUncompressedDataSize>},
    {"kestrove_compressed_bytes_total", "counter", "What it was made into.", plain<&Block::totalCompressedDataSize>},
    {"kestrove_compression_ratio", "gauge", "Compressed of uncompressed.", ratio<&Block::compressionRatio>},
    {"kestrove_filter_in_bytes_total", "counter", "Data that came into the filter.",
     plain<&Block::filter_total_bytes_in>},
    {"kestrove_filter_out_bytes_total", "counter", "Data that came out of it.", plain<&Block::filter_total_bytes_out>},
    {"kestrove_filter_compression_ratio", "gauge", "Out of in.", ratio<&Block::filter_compression_ratio>},
    {"kestrove_tcp_session_requests_failed_total", "counter", "TCP sessions that could not be set up.",
     plain<&Block::totalTcpSessionRequestsFailed>},
    {"kestrove_tcp_sessions_timed_out_total", "counter", "TCP sessions that ended for want of traffic.",
     plain<&Block::totalTcpSessionsTimedOut>},
    {"kestrove_tcp_segments_bad_checksum_total", "counter", "TCP segments with a wrong checksum.",
     plain<&Block::totalTcpSegmentsBadChecksum>},
    {"kestrove_tcp_session_initiations_peak_per_second", "gauge", "Most TCP sessions that began in a second.",
     plain<&Block::maxTcpSessionInitiationsPerSecond>},
    {"kestrove_tcp_session_terminations_peak_per_second", "gauge", "Most TCP sessions that ended in a second.",
     plain<&Block::maxTcpSessionTerminationsPerSecond>},
    {"kestrove_queue_bytes_total", "counter", "Bytes that a queue sent.", queues<&QosRow::bytesSent>},
    {"kestrove_queue_packets_total", "counter", "Packets that a queue sent.", queues<&QosRow::packetsSent>},
    {"kestrove_queue_dropped_packets_total", "counter", "Packets that a queue dropped.",
     queues<&QosRow::packetsDropped>},
    {"kestrove_queue_sessions", "gauge", "Sessions of a queue in the latest report.", queues<&QosRow::sessions>},
    {"kestrove_queue_priority", "gauge", "Priority of a queue.", queues<&QosRow::priority>},
    {"kestrove_port_bytes_total", "counter", "Bytes of a port, as the statistics program counts them.",
     ports<&Port::bytesSent, &Port::bytesReceived>},
    {"kestrove_port_packets_total", "counter", "Packets of a port.", ports<&Port::packetsSent, &Port::packetsReceived>},
    {"kestrove_port_dropped_packets_total", "counter", "Packets that a port dropped.",
     ports<&Port::dropsSent, &Port::dropsReceived>},
    {"kestrove_device_bytes_total", "counter", "Bytes of a port's device, as the kernel counts them.",
     devices<&Port::bytesSent, &Port::bytesReceived>},
    {"kestrove_device_packets_total", "counter", "Packets of a port's device.",
     devices<&Port::packetsSent, &Port::packetsReceived>},
    {"kestrove_device_dropped_packets_total", "counter", "Packets that a port's device dropped.",
     devices<&Port::dropsSent, &Port::dropsReceived>},
    {"kestrove_session_engine_total", "counter", "Counters of the session engine, four of each side.", sessionEngine},
    {"kestrove_session_engine_sessions", "gauge", "Sessions of the session engine.", engineSessions}};

}  // namespace

std::span<const MetricFamily> counterFamilies() { return kFamilies; }

std::span<const MetricFamily> metricFamilies() {
  static const std::vector<MetricFamily> all = [] {
    std::vector<MetricFamily> families;
    for (const std::span<const MetricFamily> some : {unitFamilies(), settingFamilies(), counterFamilies()}) {
      families.insert(families.end(), some.begin(), some.end());
    }
    return families;
  }();
  return all;
}

}  // namespace ctl
