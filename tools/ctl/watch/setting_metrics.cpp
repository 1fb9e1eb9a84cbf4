// SPDX-License-Identifier: Apache-2.0
// Metrics of modes, settings, tables and events.
#include <algorithm>
#include <array>

#include "kestrove/kestrove.h"
#include "tools/ctl/vocabulary.h"
#include "tools/ctl/watch/metric_tables.h"

namespace ctl {
namespace {

constexpr double kBitsAByte = 8;

constexpr NamedNumber kModes[] = {
    {"dual", SHM_MODE_DUAL}, {"single", SHM_MODE_SINGLE}, {"policy_routing", SHM_MODE_POLICY_ROUTING}};

constexpr NamedNumber kStates[] = {{"uninitialized", SHM_STATE_UNINITIALIZED}, {"operational", SHM_STATE_OPERATIONAL},
                                   {"disabled", SHM_STATE_DISABLED},           {"unconfigured", SHM_STATE_UNCONFIGURED},
                                   {"configuration", SHM_STATE_CONFIGURATION}, {"debug", SHM_STATE_DEBUG}};

constexpr NamedNumber kChanges[] = {{"lan_rate", SHM_CHANGE_LAN_RATE},
                                    {"wan_rate", SHM_CHANGE_WAN_RATE},
                                    {"lan_mtu", SHM_CHANGE_LAN_MTU},
                                    {"wan_mtu", SHM_CHANGE_WAN_MTU},
                                    {"compression", SHM_CHANGE_COMPRESSION},
                                    {"wan_congestion", SHM_CHANGE_CONGESTION},
                                    {"rules", SHM_CHANGE_RULES},
                                    {"item_38", SHM_CHANGE_ITEM_38},
                                    {"management_address", SHM_CHANGE_MANAGEMENT},
                                    {"mode", SHM_CHANGE_MODE}};

struct Switch {
  const char* name;
  uint8_t ConfigRecord::*field;
};

constexpr Switch kSwitchFields[] = {{"bridging", &ConfigRecord::transparentBridgeOperState},
                                    {"compression", &ConfigRecord::compression},
                                    {"event_logging", &ConfigRecord::loggingOperState},
                                    {"snmp", &ConfigRecord::snmpOperState},
                                    {"web", &ConfigRecord::httpOperState},
                                    {"command_line", &ConfigRecord::cliOperState},
                                    {"engine", &ConfigRecord::kestroveOperState},
                                    {"web_cache", &ConfigRecord::webCacheOperState},
                                    {"cifs", &ConfigRecord::cifsOperState},
                                    {"sshd", &ConfigRecord::sshdOperState},
                                    {"banner", &ConfigRecord::bannerOperState},
                                    {"policy_routing", &ConfigRecord::pbrOperState},
                                    {"single_interface", &ConfigRecord::singleInterfaceMode},
                                    {"fail_to_wire", &ConfigRecord::failToWireAvailable}};

const ConfigRecord& configOf(const MetricFacts& facts) { return (*facts.store)->config; }

// One metric for each word, 1 for the one that holds.
void oneOf(Metrics& out, const char* label, Vocabulary words, uint32_t number) {
  for (const NamedNumber& word : words) out.add(number == static_cast<uint32_t>(word.number), {{label, word.name}});
}

void state(const MetricFacts& facts, Metrics& out) { oneOf(out, "state", kStates, (*facts.store)->operationalState); }

void mode(const MetricFacts& facts, Metrics& out) { oneOf(out, "mode", kModes, configOf(facts).opModeState); }

void switches(const MetricFacts& facts, Metrics& out) {
  for (const Switch& one : kSwitchFields) out.add(configOf(facts).*one.field == SHM_ON, {{"switch", one.name}});
  out.add(configOf(facts).ipv6Support == SHM_ON, {{"switch", "ipv6"}});
}

void pending(const MetricFacts& facts, Metrics& out) {
  for (const NamedNumber& change : kChanges) {
    out.add(((*facts.store)->pendingChanges & static_cast<uint32_t>(change.number)) != 0, {{"change", change.name}});
  }
}

void notifications(const MetricFacts& facts, Metrics& out) {
  for (int n = 1; n <= 3; ++n) {
    out.add(((*facts.store)->notificationStatus & (1 << (n - 1))) != 0, {{"number", std::to_string(n)}});
  }
}

void congestion(const MetricFacts& facts, Metrics& out) {
  out.add(true, {{"side", "lan"}, {"control", strCongestionControl(configOf(facts).lanCongestionControl)}});
  out.add(true, {{"side", "wan"}, {"control", strCongestionControl(configOf(facts).wanCongestionControl)}});
}

void compressionMethod(const MetricFacts& facts, Metrics& out) {
  out.add(true, {{"method", strDDupState(static_cast<int>(configOf(facts).ddupOperState))}});
}

void linkRates(const MetricFacts& facts, Metrics& out) {
  out.add(configOf(facts).lanLinkRate / kBitsAByte, {{"side", "lan"}});
  out.add(configOf(facts).wanLinkRate / kBitsAByte, {{"side", "wan"}});
}

void leastRate(const MetricFacts& facts, Metrics& out) { out.add(configOf(facts).minRate / kBitsAByte); }

void mtus(const MetricFacts& facts, Metrics& out) {
  out.add(+configOf(facts).lanMaximumTransferUnit, {{"side", "lan"}});
  out.add(+configOf(facts).wanMaximumTransferUnit, {{"side", "wan"}});
}

void vlans(const MetricFacts& facts, Metrics& out) {
  out.add(+configOf(facts).lanVlanId, {{"side", "lan"}});
  out.add(+configOf(facts).wanVlanId, {{"side", "wan"}});
}

uint64_t bounded(int32_t count, uint64_t most) { return count < 0 ? 0 : std::min(static_cast<uint64_t>(count), most); }

// In list order; a damaged chain ends after as many steps as there are slots.
template <typename Slot, typename Visit>
void walk(const Slot* slots, uint32_t head, uint32_t capacity, Visit visit) {
  uint32_t slot = head;
  for (uint32_t steps = 0; slot < capacity && slots[slot].inUse == 1 && steps < capacity; ++steps) {
    visit(slots[slot]);
    slot = slots[slot].next;
  }
}

template <typename Visit>
void walkRoutes(const ShmData& store, Visit visit) {
  walk(store.routes.slot, store.routes.head, SHM_ROUTES, [&visit](const RouteEntry& route) { visit(0, route.status); });
  walk(store.routes6.slot, store.routes6.head6, SHM_ROUTES6,
       [&visit](const Route6Entry& route) { visit(1, route.status); });
}

uint64_t eventsHeld(const EventLog& log) {
  return log.eventLogFull ? uint64_t{SHM_EVENTS} : log.writeIndex % SHM_EVENTS;
}

void entries(const MetricFacts& facts, Metrics& out) {
  const ShmData& store = **facts.store;
  uint64_t routes[2] = {};
  walkRoutes(store, [&routes](int family, uint32_t) { ++routes[family]; });
  out.add(bounded(store.config.userCount, SHM_USERS), {{"table", "users"}});
  out.add(bounded(store.managementAddressCount, SHM_MANAGEMENT_ADDRESSES), {{"table", "management_addresses"}});
  out.add(bounded(store.ip6Count, SHM_IP6_ADDRESSES), {{"table", "ipv6_addresses"}});
  out.add(routes[0], {{"table", "routes"}});
  out.add(routes[1], {{"table", "ipv6_routes"}});
  out.add(bounded(store.filterTable.ruleCount, SHM_RULES), {{"table", "rules"}});
  out.add(eventsHeld(store.eventLog), {{"table", "events"}});
}

void capacities(const MetricFacts&, Metrics& out) {
  constexpr struct {
    const char* name;
    uint64_t most;
  } kTables[] = {{"users", SHM_USERS},
                 {"management_addresses", SHM_MANAGEMENT_ADDRESSES},
                 {"ipv6_addresses", SHM_IP6_ADDRESSES},
                 {"routes", SHM_ROUTES},
                 {"ipv6_routes", SHM_ROUTES6},
                 {"rules", SHM_RULES},
                 {"events", SHM_EVENTS}};
  for (const auto& table : kTables) out.add(table.most, {{"table", table.name}});
}

void administrators(const MetricFacts& facts, Metrics& out) {
  out.add(bounded(configOf(facts).adminUserCount, SHM_USERS));
}

void logins(const MetricFacts& facts, Metrics& out) {
  for (uint64_t i = 0; i < bounded(configOf(facts).userCount, SHM_USERS); ++i) {
    const UserAccount& user = configOf(facts).users[i];
    if (user.lastLoginSeconds != 0) out.add(+user.lastLoginSeconds, {{"user", text(user.username)}});
  }
}

void routeStates(const MetricFacts& facts, Metrics& out) {
  constexpr const char* kFamilies[] = {"ipv4", "ipv6"};
  std::array<std::array<uint64_t, std::size(kRouteStatus)>, 2> counts = {};
  walkRoutes(**facts.store, [&counts](int family, uint32_t status) {
    for (size_t i = 0; i < std::size(kRouteStatus); ++i) {
      counts[static_cast<size_t>(family)][i] += static_cast<uint32_t>(kRouteStatus[i].number) == status;
    }
  });
  for (size_t family = 0; family < 2; ++family) {
    for (size_t i = 0; i < std::size(kRouteStatus); ++i) {
      out.add(counts[family][i], {{"family", kFamilies[family]}, {"status", kRouteStatus[i].name}});
    }
  }
}

// How many rules there are for each word of a field.
template <typename Field>
void countRules(const MetricFacts& facts, Metrics& out, const char* label, Vocabulary words, Field field) {
  const FilterTable& table = (*facts.store)->filterTable;
  for (const NamedNumber& word : words) {
    uint64_t count = 0;
    for (uint64_t i = 0; i < bounded(table.ruleCount, SHM_RULES); ++i) {
      count += static_cast<int64_t>(field(table.rule[i])) == word.number;
    }
    out.add(count, {{label, word.name}});
  }
}

void ruleTargets(const MetricFacts& facts, Metrics& out) {
  countRules(facts, out, "target", kTargets, [](const FilterRule& rule) { return rule.target; });
}

void ruleStates(const MetricFacts& facts, Metrics& out) {
  countRules(facts, out, "status", kRuleStatus, [](const FilterRule& rule) { return rule.ruleAction; });
}

void addressStates(const MetricFacts& facts, Metrics& out) {
  const ShmData& store = **facts.store;
  uint64_t applied = 0;
  const uint64_t count = bounded(store.managementAddressCount, SHM_MANAGEMENT_ADDRESSES);
  for (uint64_t i = 0; i < count; ++i) applied += store.managementAddress[i].status == SHM_ADDRESS_APPLIED;
  out.add(applied, {{"status", "applied"}});
  out.add(count - applied, {{"status", "not_applied"}});
}

const EventRecord& eventBehind(const EventLog& log, uint64_t distance) {
  return log.record[(log.writeIndex + 2 * SHM_EVENTS - distance) % SHM_EVENTS];
}

void newestEvent(const MetricFacts& facts, Metrics& out) {
  const EventLog& log = (*facts.store)->eventLog;
  if (eventsHeld(log) > 0) out.add(+eventBehind(log, 1).timestamp);
}

void eventSources(const MetricFacts& facts, Metrics& out) {
  constexpr const char* kSources[] = {"system", "engine", "web",    "serial", "ssh",
                                      "snmp_1", "snmp_2", "snmp_3", "unknown"};
  const EventLog& log = (*facts.store)->eventLog;
  std::array<uint64_t, std::size(kSources)> counts = {};
  for (uint64_t i = 1; i <= eventsHeld(log); ++i) {
    ++counts[std::min<size_t>(eventBehind(log, i).source, counts.size() - 1)];
  }
  for (size_t i = 0; i < counts.size(); ++i) out.add(counts[i], {{"source", kSources[i]}});
}

constexpr MetricFamily kFamilies[] = {
    {"kestrove_operational_state", "gauge", "1 for the state that the store is in.", state},
    {"kestrove_operating_mode", "gauge", "1 for the mode of the interfaces.", mode},
    {"kestrove_switch_enabled", "gauge", "Whether a switch is on.", switches},
    {"kestrove_pending_change", "gauge", "Whether the engine has not fetched a change.", pending},
    {"kestrove_notification_raised", "gauge", "Whether a notification waits for a reader.", notifications},
    {"kestrove_congestion_control_info", "gauge", "Congestion control of each side.", congestion},
    {"kestrove_compression_method_info", "gauge", "Method of compression and de-duplication.", compressionMethod},
    {"kestrove_link_rate_bytes_per_second", "gauge", "Link rate of each side, as set.", linkRates},
    {"kestrove_link_rate_minimum_bytes_per_second", "gauge", "Lowest link rate that the product takes.", leastRate},
    {"kestrove_mtu_bytes", "gauge", "Largest packet of each side.", mtus},
    {"kestrove_vlan_id", "gauge", "VLAN of each side; 0 is none.", vlans},
    {"kestrove_table_entries", "gauge", "Entries of each table of the store.", entries},
    {"kestrove_table_capacity", "gauge", "Entries that each table takes.", capacities, false},
    {"kestrove_administrators", "gauge", "Users that may change something.", administrators},
    {"kestrove_user_last_login_timestamp_seconds", "gauge", "Last log-in of each user that ever did.", logins},
    {"kestrove_routes", "gauge", "Routes by family and status.", routeStates},
    {"kestrove_rules_by_target", "gauge", "Traffic rules by what they do.", ruleTargets},
    {"kestrove_rules_by_status", "gauge", "Traffic rules by status.", ruleStates},
    {"kestrove_management_addresses", "gauge", "Management addresses by status.", addressStates},
    {"kestrove_events_held", "gauge", "Events of the log by source; the log has room for a fixed number.",
     eventSources},
    {"kestrove_event_newest_timestamp_seconds", "gauge", "When the newest event was logged.", newestEvent}};

}  // namespace

std::span<const MetricFamily> settingFamilies() { return kFamilies; }

}  // namespace ctl
