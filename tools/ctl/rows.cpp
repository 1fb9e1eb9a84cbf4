// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/rows.h"

#include <signal.h>

#include <cerrno>

#include "kestrove/iface.h"
#include "tools/ctl/vocabulary.h"

namespace ctl {
namespace {

constexpr int kBitsPerKilobit = 1000;

std::string endText(const FilterRule& rule, bool source) {
  if (rule.ipVersion == SHM_FAMILY_IPV6) {
    return address6Text(source ? rule.srcAddr6 : rule.dstAddr6) + "/" +
           std::to_string(source ? rule.srcPrefixLen6 : rule.dstPrefixLen6);
  }
  uint32_t mask = source ? rule.srcMask : rule.dstMask;
  if (rule.ipVersion != SHM_FAMILY_IPV4 || mask == 0) return "any";
  return addressText(source ? rule.srcAddr : rule.dstAddr) + "/" + std::to_string(inet_ntocidr(mask));
}

std::string portsText(int first, int last) {
  if (first == 0) return "any";
  return std::to_string(first) + (last != first ? "-" + std::to_string(last) : "");
}

// Any number but the two is one that accelerates.
const char* targetText(int target) {
  return target == SHM_TARGET_DROP ? "drop" : target == SHM_TARGET_BRIDGE ? "bridge" : "accelerate";
}

Json qosRow(const std::string& name, const QosRow& qos) {
  return {{"class", name},
          {"priority", +qos.priority},
          {"bytes", +qos.bytesSent},
          {"packets", +qos.packetsSent},
          {"drops", +qos.packetsDropped},
          {"current", +qos.currentRate},
          {"average", +qos.averageRate},
          {"maximum", +qos.maximumRate},
          {"sessions", +qos.sessions}};
}

}  // namespace

Json userRow(const UserAccount& account) {
  return {{"name", text(account.username)},
          {"administrator", account.superUser == 1},
          {"lastLogin", timeJson(account.lastLoginSeconds)},
          {"lastPasswordChange", timeJson(account.lastPasswdChange)}};
}

Json ruleRow(int position, const FilterRule& rule) {
  return {{"position", position},
          {"family", rule.ipVersion == SHM_FAMILY_IPV6   ? "IPv6"
                     : rule.ipVersion == SHM_FAMILY_IPV4 ? "IPv4"
                                                         : "any"},
          {"source", endText(rule, true)},
          {"destination", endText(rule, false)},
          {"protocol", nameOf(kProtocols, rule.proto)},
          {"sourcePorts", portsText(rule.srcPort, rule.srcPortEnd)},
          {"destinationPorts", portsText(rule.destPort, rule.destPortEnd)},
          {"target", targetText(rule.target)},
          {"priority", +rule.priority},
          {"kbit/s", rule.bandwidth / kBitsPerKilobit},
          {"acceleration", switchText(rule.accel)},
          {"status", nameOf(kRuleStatus, rule.ruleAction)}};
}

Json managementRow(const ManagementAddress& entry) {
  bool six = entry.ipVersion == SHM_FAMILY_IPV6;
  return {{"address", six ? address6Text(entry.address6) : addressText(entry.address)},
          {"mask", six ? std::to_string(entry.prefixLength6) : addressText(entry.mask)},
          {"interface", nameOf(kInterfaceKinds, static_cast<uint32_t>(entry.interfaceKind))},
          {"status", entry.status == SHM_ADDRESS_APPLIED ? "applied" : "not applied"}};
}

Json address6Row(const Ip6Address& entry) {
  return {{"address", address6Text(entry.address)},
          {"mask", std::to_string(entry.prefixLength)},
          {"interface", "br0"},
          {"status", "bridge's own"}};
}

Json routeRow(const RouteEntry& route) {
  return {{"destination", addressText(route.destination)},
          {"mask", addressText(route.netmask)},
          {"gateway", addressText(route.gateway)},
          {"status", nameOf(kRouteStatus, route.status)}};
}

Json route6Row(const Route6Entry& route) {
  return {{"destination", address6Text(route.destination) + "/" + std::to_string(route.prefixLength)},
          {"gateway", address6Text(route.gateway)},
          {"interface", text(route.interfaceName)},
          {"status", nameOf(kRouteStatus, route.status)}};
}

Json qosTable(const QosRow (&rows)[SHM_QOS_ROWS]) {
  Json table = Json::array({qosRow("WAN", rows[0])});
  for (int i = 1; i <= 8; ++i) table.push_back(qosRow("WAN " + std::to_string(i), rows[i]));
  table.push_back(qosRow("LAN", rows[9]));
  return table;
}

Json interfaceCounterRow(const char* name, const InterfaceCounters& counters) {
  return {{"interface", name},
          {"bytesSent", +counters.bytesSent},
          {"bytesReceived", +counters.bytesReceived},
          {"packetsSent", +counters.packetsSent},
          {"packetsReceived", +counters.packetsReceived},
          {"dropsSent", +counters.dropsSent},
          {"dropsReceived", +counters.dropsReceived}};
}

Json statisticsObject(const StatisticsBlock& block) {
  return {{"lastResetHundredths", +block.counterLastResetTime},
          {"accumulationInterval", +block.accumulationInterval},
          {"accumulatedIntervals", +block.accumulatedIntervals},
          {"totalUncompressedDataSize", +block.totalUncompressedDataSize},
          {"totalCompressedDataSize", +block.totalCompressedDataSize},
          {"compressionRatio", +block.compressionRatio},
          {"filterBytesIn", +block.filter_total_bytes_in},
          {"filterBytesOut", +block.filter_total_bytes_out},
          {"filterCompressionRatio", +block.filter_compression_ratio},
          {"maxTcpSessionInitiationsPerSecond", +block.maxTcpSessionInitiationsPerSecond},
          {"maxTcpSessionTerminationsPerSecond", +block.maxTcpSessionTerminationsPerSecond},
          {"totalTcpSessionRequestsFailed", +block.totalTcpSessionRequestsFailed},
          {"totalTcpSessionsTimedOut", +block.totalTcpSessionsTimedOut},
          {"totalTcpSegmentsBadChecksum", +block.totalTcpSegmentsBadChecksum}};
}

Json pendingNames(uint32_t bits) {
  constexpr NamedNumber kChanges[] = {{"LAN rate", SHM_CHANGE_LAN_RATE},
                                      {"WAN rate", SHM_CHANGE_WAN_RATE},
                                      {"LAN MTU", SHM_CHANGE_LAN_MTU},
                                      {"WAN MTU", SHM_CHANGE_WAN_MTU},
                                      {"compression", SHM_CHANGE_COMPRESSION},
                                      {"WAN congestion", SHM_CHANGE_CONGESTION},
                                      {"rules", SHM_CHANGE_RULES},
                                      {"item 38", SHM_CHANGE_ITEM_38},
                                      {"management address", SHM_CHANGE_MANAGEMENT},
                                      {"mode", SHM_CHANGE_MODE}};
  Json names = Json::array();
  for (const NamedNumber& change : kChanges) {
    if (bits & static_cast<uint32_t>(change.number)) names.push_back(change.name);
  }
  return names;
}

Json taskTable(const int32_t (&pids)[SHM_TASKS]) {
  constexpr const char* kTasks[SHM_TASKS] = {"snmpd", "httpd", "statsd", "sshd", "kestrove", "miscMonitor", "monitor"};
  Json tasks = Json::array();
  for (int i = 0; i < SHM_TASKS; ++i) {
    tasks.push_back({{"task", i}, {"name", kTasks[i]}, {"pid", +pids[i]}, {"process", processLife(pids[i])}});
  }
  return tasks;
}

const char* processLife(int pid) {
  if (pid <= 0) return "none";
  return kill(pid, 0) == 0 || errno == EPERM ? "alive" : "dead";
}

}  // namespace ctl
