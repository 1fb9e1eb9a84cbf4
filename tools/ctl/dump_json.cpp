// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/dump_json.h"

#include <cstring>
#include <memory>

#include "kestrove/kestrove.h"
#include "tools/ctl/event_rows.h"
#include "tools/ctl/item_names.h"
#include "tools/ctl/rows.h"
#include "tools/ctl/vocabulary.h"

namespace ctl {
namespace {

// The store as it stands: what others write without the lock does not change meanwhile.
std::unique_ptr<ShmData> snapshot() {
  auto copy = std::make_unique<ShmData>();
  memcpy(copy.get(), shm, sizeof *copy);
  return copy;
}

uint32_t bounded(int32_t count, uint32_t most) {
  if (count < 0) return 0;
  return static_cast<uint32_t>(count) < most ? static_cast<uint32_t>(count) : most;
}

Json files(const ShmData& store) {
  return {{"configFileName", text(store.config.configFileName)},
          {"eventLogFileName", text(store.config.eventLogFileName)}};
}

Json users(const ShmData& store) {
  Json accounts = Json::array();
  for (uint32_t i = 0; i < bounded(store.config.userCount, SHM_USERS); ++i) {
    accounts.push_back(userRow(store.config.users[i]));
  }
  return {
      {"userCount", +store.config.userCount}, {"adminUserCount", +store.config.adminUserCount}, {"accounts", accounts}};
}

Json itemValue(const ItemRow& row) {
  char buffer[257] = {};
  uint32_t word = 0;
  switch (row.family) {
    case ItemFamily::kText: return getShmString(row.id, buffer, 256) == 0 ? Json(buffer) : Json();
    case ItemFamily::kConfig:
      if (getKestroveConfigItem(row.id, &word) != 0) return {};
      return row.form == ItemForm::kSwitch ? Json(switchText(word)) : Json(word);
    case ItemFamily::kNetwork: return getNetworkConfigItem(row.id, &word) == 0 ? Json(addressText(word)) : Json();
  }
  return {};
}

Json interfaceNames(const ConfigRecord& config) {
  return {{"lanInterfaceName", text(config.lanInterfaceName)},
          {"physicalLanInterfaceName", text(config.physicalLanInterfaceName)},
          {"wanInterfaceName", text(config.wanInterfaceName)},
          {"physicalWanInterfaceName", text(config.physicalWanInterfaceName)},
          {"bridgeRouterPhysicalName", text(config.bridgeRouterPhysicalName)},
          {"managementInterfaceName", text(config.managementInterfaceName)}};
}

// The fields that no item carries.
Json furtherFields(const ShmData& store) {
  const ConfigRecord& config = store.config;
  return {{"kestroveFullVersion", text(config.kestroveFullVersion)},
          {"kestroveVersion", text(config.kestroveVersion)},
          {"drelmFullVersion", text(config.drelmFullVersion)},
          {"drelmVersion", text(config.drelmVersion)},
          {"productId", +config.productId},
          {"product", getProductName(config.productId)},
          {"unitId", text(config.unitId)},
          {"ddupOperState", strDDupState(static_cast<int>(config.ddupOperState))},
          {"ddupStartupOptions", text(store.ddupStartupOptions)},
          {"cifsOperState", switchText(config.cifsOperState)},
          {"webCacheOperState", switchText(config.webCacheOperState)},
          {"dnsAddress", addressText(config.dnsAddress)},
          {"lanCongestionControl", strCongestionControl(config.lanCongestionControl)},
          {"wanCongestionControl", strCongestionControl(config.wanCongestionControl)},
          {"lanSendBufferSize", +config.lanSendBufferSize},
          {"lanReceiveBufferSize", +config.lanReceiveBufferSize},
          {"wanSendBufferSize", +config.wanSendBufferSize},
          {"wanReceiveBufferSize", +config.wanReceiveBufferSize},
          {"lanVlanId", +config.lanVlanId},
          {"wanVlanId", +config.wanVlanId},
          {"lanHardwareAddress", hardwareText(store.lanHardwareAddress)},
          {"wanHardwareAddress", hardwareText(store.wanHardwareAddress)},
          {"managementHardwareAddress", hardwareText(store.managementHardwareAddress)},
          {"idleTimeout", +config.idleTimeout},
          {"loginFrom", store.loginFrom == 3   ? "serial port"
                        : store.loginFrom == 4 ? "ssh"
                                               : "unknown"}};
}

Json config(const ShmData& store) {
  Json fields = furtherFields(store);
  fields.update(interfaceNames(store.config));
  for (const ItemRow& row : itemRows()) {
    if (!fields.contains(row.name)) fields[row.name] = itemValue(row);
  }
  return fields;
}

Json notifications(const ShmData& store) {
  Json raised = Json::array();
  for (int n = 1; n <= 3; ++n) {
    if (store.notificationStatus & (1 << (n - 1))) raised.push_back(n);
  }
  return {{"raised", raised}};
}

Json sessions(const ShmData& store) {
  auto row = [&](const char* name, int first) {
    Json counters = Json::array();
    for (int i = first; i < first + 4; ++i) counters.push_back(+store.sessionEngine.counter[i]);
    return Json{{"interface", name}, {"counters", counters}};
  };
  return {{"sessions", +store.sessionEngine.sessions}, {"interfaces", Json::array({row("LAN", 0), row("WAN", 4)})}};
}

// In list order; a damaged chain ends after as many steps as there are slots.
template <typename Slot, typename Row>
Json chain(const Slot* slots, uint32_t head, uint32_t capacity, Row row) {
  Json routes = Json::array();
  uint32_t slot = head;
  for (uint32_t steps = 0; slot < capacity && slots[slot].inUse == 1 && steps < capacity; ++steps) {
    routes.push_back(row(slots[slot]));
    slot = slots[slot].next;
  }
  return routes;
}

Json rules(const ShmData& store) {
  Json rows = Json::array();
  for (uint32_t i = 0; i < bounded(store.filterTable.ruleCount, SHM_RULES); ++i) {
    rows.push_back(ruleRow(static_cast<int>(i), store.filterTable.rule[i]));
  }
  return rows;
}

Json events(const ShmData& store) {
  Json rows = Json::array();
  for (uint32_t i = 0; i < eventCount(); ++i) rows.push_back(eventRow(i));
  return {{"eventLogFull", store.eventLog.eventLogFull != 0},
          {"readIndex", +store.eventLog.readIndex},
          {"writeIndex", +store.eventLog.writeIndex},
          {"events", rows}};
}

Json addresses(const ShmData& store) {
  Json rows = Json::array();
  for (uint32_t i = 0; i < bounded(store.managementAddressCount, SHM_MANAGEMENT_ADDRESSES); ++i) {
    rows.push_back(managementRow(store.managementAddress[i]));
  }
  for (uint32_t i = 0; i < bounded(store.ip6Count, SHM_IP6_ADDRESSES); ++i) {
    rows.push_back(address6Row(store.ip6Address[i]));
  }
  return rows;
}

}  // namespace

Json dumpJson() {
  const std::unique_ptr<ShmData> store = snapshot();
  const StatisticsBlock& block = store->statistics;
  return {{"operationalState", strOperationalState(static_cast<int>(store->operationalState))},
          {"files", files(*store)},
          {"users", users(*store)},
          {"config", config(*store)},
          {"addresses", addresses(*store)},
          {"stats", statisticsObject(block)},
          {"notifications", notifications(*store)},
          {"interfaces", Json::array({interfaceCounterRow("LAN", block.interfaceRow[0]),
                                      interfaceCounterRow("WAN", block.interfaceRow[1])})},
          {"qos", qosTable(store->qos)},
          {"tasks", taskTable(store->taskPids)},
          {"sessions", sessions(*store)},
          {"routes", chain(store->routes.slot, store->routes.head, SHM_ROUTES, routeRow)},
          {"routes6", chain(store->routes6.slot, store->routes6.head6, SHM_ROUTES6, route6Row)},
          {"rules", rules(*store)},
          {"events", events(*store)}};
}

}  // namespace ctl
