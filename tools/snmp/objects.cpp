// SPDX-License-Identifier: Apache-2.0
#include "tools/snmp/objects.h"

#include <algorithm>
#include <cstring>

#include "kestrove/layout.h"

namespace snmp {
namespace {

constexpr Group kGroups[] = {{1, "items"}, {2, "network"}, {3, "texts"}, {4, "unit"}, {5, "engine"}, {6, "statistics"}};

enum Arc : uint32_t { kItems = 1, kNetwork, kTexts, kUnit, kEngine, kStatistics };

// A member with its place and width.
#define OF(record, member) offsetof(record, member), sizeof(record::member)
#define CONFIG(member) offsetof(ShmData, config) + offsetof(ConfigRecord, member), sizeof(ConfigRecord::member)
#define STATISTIC(member) \
  offsetof(ShmData, statistics) + offsetof(StatisticsBlock, member), sizeof(StatisticsBlock::member)

// By the name of the member: the rows of the items name their fields so.
struct Member {
  const char* name;
  size_t place;
  size_t width;
};
#define ROW_OF(member) {#member, CONFIG(member)},
#define ITEM(number, member, ...) ROW_OF(member)
#define NETWORK_ITEM(number, member, ...) ROW_OF(member)
#define TEXT(number, member, ...) ROW_OF(member)
constexpr Member kMembers[] = {
#include "items/items.def"
};

const Scalar kOthers[] = {
    {kUnit, 1, {"unitId", Kind::kText, CONFIG(unitId), "", "The unit's own identifier."}},
    {kUnit, 2, {"productId", Kind::kNumber, CONFIG(productId), "", "The product."}},
    {kUnit, 3, {"gatewayId", Kind::kHardware, CONFIG(gatewayId), "", "The gateway's identifier, four bytes."}},
    {kUnit, 4, {"engineVersion", Kind::kText, CONFIG(kestroveFullVersion), "", "Version of the engine."}},
    {kUnit, 5, {"protocolVersion", Kind::kText, CONFIG(drelmFullVersion), "", "Version of the protocol engine."}},
    {kUnit,
     6,
     {"lanHardwareAddress", Kind::kHardware, OF(ShmData, lanHardwareAddress), "", "Hardware address of the LAN port."}},
    {kUnit,
     7,
     {"wanHardwareAddress", Kind::kHardware, OF(ShmData, wanHardwareAddress), "", "Hardware address of the WAN port."}},
    {kEngine,
     1,
     {"operationalState", Kind::kNumber, OF(ShmData, operationalState), "",
      "1 operational, 2 or 3 without a configuration, 4 Configuration Mode, 5 Debug Mode."}},
    {kEngine, 2, {"failedStarts", Kind::kGauge, CONFIG(kestroveRestartCount), "", "Failed starts in a row."}},
    {kEngine,
     3,
     {"failedBoots", Kind::kGauge, CONFIG(kestroveRebootCount), "",
      "Reboots in a row because the engine would not start."}},
    {kEngine,
     4,
     {"sessions", Kind::kInteger, offsetof(ShmData, sessionEngine) + offsetof(SessionEngineStats, sessions),
      sizeof(int32_t), "sessions", "Sessions of the session engine as last reported."}},
    {kStatistics, 1, {"intervals", Kind::kCounter, STATISTIC(accumulatedIntervals), "", "Records since the reset."}},
    {kStatistics,
     2,
     {"uncompressedBytes", Kind::kCounter, STATISTIC(totalUncompressedDataSize), "bytes", "What was to be sent."}},
    {kStatistics,
     3,
     {"compressedBytes", Kind::kCounter, STATISTIC(totalCompressedDataSize), "bytes", "What was sent of it."}},
    {kStatistics,
     4,
     {"compressionRatio", Kind::kGauge, STATISTIC(compressionRatio), "percent", "Compressed of uncompressed."}},
    {kStatistics,
     5,
     {"sessionRequestsFailed", Kind::kCounter, STATISTIC(totalTcpSessionRequestsFailed), "sessions",
      "Sessions that could not be opened."}},
    {kStatistics,
     6,
     {"sessionsTimedOut", Kind::kCounter, STATISTIC(totalTcpSessionsTimedOut), "sessions", "Sessions that timed out."}},
    {kStatistics,
     7,
     {"badChecksums", Kind::kCounter, STATISTIC(totalTcpSegmentsBadChecksum), "segments",
      "Segments with a bad checksum."}},
};

const Table kTables[] = {
    {7,
     "rule",
     "The traffic policy: the first match decides, the last row is the default rule.",
     offsetof(ShmData, filterTable) + offsetof(FilterTable, rule),
     sizeof(FilterRule),
     SHM_RULES,
     Rows::kCounted,
     offsetof(ShmData, filterTable) + offsetof(FilterTable, ruleCount),
     {{"ruleFamily", Kind::kNumber, OF(FilterRule, ipVersion), "", "4, 6, or 1 for any."},
      {"ruleSource", Kind::kAddress, OF(FilterRule, srcAddr), "", "IPv4 source."},
      {"ruleSourceMask", Kind::kAddress, OF(FilterRule, srcMask), "", "Its mask, 0 for any source."},
      {"ruleDestination", Kind::kAddress, OF(FilterRule, dstAddr), "", "IPv4 destination."},
      {"ruleDestinationMask", Kind::kAddress, OF(FilterRule, dstMask), "", "Its mask, 0 for any destination."},
      {"ruleSource6", Kind::kAddress6, OF(FilterRule, srcAddr6), "", "IPv6 source."},
      {"ruleSourcePrefix6", Kind::kNumber, OF(FilterRule, srcPrefixLen6), "", "Its prefix length, 0 for any."},
      {"ruleDestination6", Kind::kAddress6, OF(FilterRule, dstAddr6), "", "IPv6 destination."},
      {"ruleDestinationPrefix6", Kind::kNumber, OF(FilterRule, dstPrefixLen6), "", "Its prefix length, 0 for any."},
      {"ruleProtocol", Kind::kNumber, OF(FilterRule, proto), "", "IP protocol."},
      {"ruleSourcePort", Kind::kInteger, OF(FilterRule, srcPort), "", "First source port, 0 for any."},
      {"ruleSourcePortEnd", Kind::kInteger, OF(FilterRule, srcPortEnd), "", "Last source port."},
      {"ruleDestinationPort", Kind::kInteger, OF(FilterRule, destPort), "", "First destination port, 0 for any."},
      {"ruleDestinationPortEnd", Kind::kInteger, OF(FilterRule, destPortEnd), "", "Last destination port."},
      {"ruleTarget", Kind::kInteger, OF(FilterRule, target), "", "1 accelerate, 2 bridge, 3 drop."},
      {"rulePriority", Kind::kInteger, OF(FilterRule, priority), "", "Class of its traffic."},
      {"ruleBandwidth", Kind::kInteger, OF(FilterRule, bandwidth), "bit/s", "Limit of its traffic."},
      {"ruleAcceleration", Kind::kSwitch, OF(FilterRule, accel), "", "Whether its traffic is accelerated."},
      {"ruleStatus", Kind::kNumber, OF(FilterRule, ruleAction), "",
       "0 undefined, 1 invalid, 2 not in service, 3 active."}}},
    {8,
     "route",
     "IPv4 routes of the operator.",
     offsetof(ShmData, routes) + offsetof(RouteTable, slot),
     sizeof(RouteEntry),
     SHM_ROUTES,
     Rows::kMarked,
     offsetof(RouteEntry, inUse),
     {{"routeDestination", Kind::kAddress, OF(RouteEntry, destination), "", "Network."},
      {"routeMask", Kind::kAddress, OF(RouteEntry, netmask), "", "Its mask."},
      {"routeGateway", Kind::kAddress, OF(RouteEntry, gateway), "", "Next hop."},
      {"routeStatus", Kind::kNumber, OF(RouteEntry, status), "", "Whether the kernel has it."}}},
    {9,
     "route6",
     "IPv6 routes of the operator.",
     offsetof(ShmData, routes6) + offsetof(Route6Table, slot),
     sizeof(Route6Entry),
     SHM_ROUTES6,
     Rows::kMarked,
     offsetof(Route6Entry, inUse),
     {{"route6Destination", Kind::kAddress6, OF(Route6Entry, destination), "", "Prefix."},
      {"route6PrefixLength", Kind::kNumber, OF(Route6Entry, prefixLength), "", "Its length."},
      {"route6Gateway", Kind::kAddress6, OF(Route6Entry, gateway), "", "Next hop."},
      {"route6Interface", Kind::kText, OF(Route6Entry, interfaceName), "", "The interface that reaches it."},
      {"route6Status", Kind::kNumber, OF(Route6Entry, status), "", "Whether the kernel has it."}}},
    {10,
     "user",
     "Accounts of the appliance; no passwords.",
     offsetof(ShmData, config) + offsetof(ConfigRecord, users),
     sizeof(UserAccount),
     SHM_USERS,
     Rows::kCounted,
     offsetof(ShmData, config) + offsetof(ConfigRecord, userCount),
     {{"userName", Kind::kText, OF(UserAccount, username), "", "Name."}}},
    {11,
     "port",
     "Counters of the ports as the engine's records have them: 1 LAN, 2 WAN.",
     offsetof(ShmData, statistics) + offsetof(StatisticsBlock, interfaceRow),
     sizeof(InterfaceCounters),
     2,
     Rows::kAll,
     0,
     {{"portBytesSent", Kind::kCounter, OF(InterfaceCounters, bytesSent), "bytes", "Sent."},
      {"portBytesReceived", Kind::kCounter, OF(InterfaceCounters, bytesReceived), "bytes", "Received."},
      {"portPacketsSent", Kind::kCounter, OF(InterfaceCounters, packetsSent), "packets", "Sent."},
      {"portPacketsReceived", Kind::kCounter, OF(InterfaceCounters, packetsReceived), "packets", "Received."},
      {"portDropsSent", Kind::kCounter, OF(InterfaceCounters, dropsSent), "packets", "Dropped on the way out."},
      {"portDropsReceived", Kind::kCounter, OF(InterfaceCounters, dropsReceived), "packets",
       "Dropped on the way in."}}},
    {12,
     "queue",
     "Queues: 1 all of the WAN, 2 to 9 its classes 1 to 8, 10 the LAN.",
     offsetof(ShmData, qos),
     sizeof(QosRow),
     SHM_QOS_ROWS,
     Rows::kAll,
     0,
     {{"queuePriority", Kind::kInteger, OF(QosRow, priority), "", "Class."},
      {"queueBytesSent", Kind::kCounter, OF(QosRow, bytesSent), "bytes", "Sent."},
      {"queuePacketsSent", Kind::kCounter, OF(QosRow, packetsSent), "packets", "Sent."},
      {"queuePacketsDropped", Kind::kCounter, OF(QosRow, packetsDropped), "packets", "Dropped."},
      {"queueCurrentRate", Kind::kGauge, OF(QosRow, currentRate), "", "Rate of the latest interval."},
      {"queueAverageRate", Kind::kGauge, OF(QosRow, averageRate), "", "Average of the latest interval."},
      {"queueMaximumRate", Kind::kGauge, OF(QosRow, maximumRate), "", "Largest since the reset."},
      {"queueSessions", Kind::kGauge, OF(QosRow, sessions), "sessions", "Sessions of the latest interval."}}},
    {13,
     "task",
     "Tasks of the monitor: 1 snmpd, 2 httpd, 3 statsd, 4 sshd, 5 the engine, 6 miscMonitor, 7 monitor.",
     offsetof(ShmData, taskPids),
     sizeof(int32_t),
     SHM_TASKS,
     Rows::kAll,
     0,
     {{"taskProcess", Kind::kInteger, 0, sizeof(int32_t), "", "Process id, 0 for none."}}},
};

Kind kindOf(const ctl::ItemRow& row) {
  switch (row.form) {
    case ctl::ItemForm::kSwitch: return Kind::kSwitch;
    case ctl::ItemForm::kAddress: return Kind::kAddress;
    case ctl::ItemForm::kText: return Kind::kText;
    case ctl::ItemForm::kNumber: break;
  }
  return Kind::kNumber;
}

// Whatever runs programs or moves the appliance between its modes is no matter of SNMP.
bool canBeSet(const ctl::ItemRow& row) {
  return *row.range && !*row.action && row.modeEvent == 0 && row.family != ctl::ItemFamily::kNetwork;
}

Scalar scalarOf(const ctl::ItemRow& row) {
  const auto* member =
      std::ranges::find_if(kMembers, [&](const Member& each) { return !strcmp(each.name, row.field); });
  const uint32_t group = row.family == ctl::ItemFamily::kConfig    ? kItems
                         : row.family == ctl::ItemFamily::kNetwork ? kNetwork
                                                                   : kTexts;
  std::string description = "Item " + std::to_string(row.id) + " of the appliance.";
  if (*row.range) description = "Item " + std::to_string(row.id) + " of the appliance, " + std::string(row.range) + ".";
  return {group,
          static_cast<uint32_t>(row.id),
          {row.name, kindOf(row), member->place, member->width, row.unit, description},
          canBeSet(row) ? &row : nullptr};
}

// The web session's text opens doors.
bool isSecret(const ctl::ItemRow& row) {
  return row.family == ctl::ItemFamily::kText && row.id == SHM_TEXT_WEB_SESSION;
}

std::vector<Scalar> allScalars() {
  std::vector<Scalar> all(std::begin(kOthers), std::end(kOthers));
  for (const ctl::ItemRow& row : ctl::itemRows()) {
    if (!isSecret(row)) all.push_back(scalarOf(row));
  }
  std::ranges::sort(all, {}, [](const Scalar& scalar) { return std::pair(scalar.group, scalar.arc); });
  return all;
}

}  // namespace

std::span<const Group> groups() { return kGroups; }

const std::vector<Scalar>& scalars() {
  static const std::vector<Scalar> all = allScalars();
  return all;
}

const std::vector<Table>& tables() {
  static const std::vector<Table> all(std::begin(kTables), std::end(kTables));
  return all;
}

std::string descriptor(const std::string& name) {
  std::string text = "kest" + name;
  text[4] = static_cast<char>(toupper(text[4]));
  return text;
}

}  // namespace snmp
