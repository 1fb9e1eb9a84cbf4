// SPDX-License-Identifier: Apache-2.0
#include "tests/explore/operations.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <string.h>
#include <unistd.h>

#include "kestrove/kestrove.h"
#include "tests/explore/park.h"
#include "tests/explore/samples.h"

namespace kestrove::explore {
namespace {

constexpr uint32_t kSource = 2;
constexpr char kUser[] = "web";
constexpr int kEngineTask = 4;
constexpr int kNobodysPid = 0x3fffffff;  // beyond the highest number of a process

int item(int id, uint32_t value) { return setKestroveConfigItem(id, value, kSource, kUser); }
int networkItem(int id, const char* value) {
  uint32_t address = quad(value);
  return setNetworkConfigItem(id, &address, kSource, kUser);
}

int insertRuleFor(int position, int port) {
  FilterRule rule = ruleFor(port);
  return insertRule(position, &rule);
}
int addRuleFor(int position, int port) {
  FilterRule rule = ruleFor(port);
  return addRule(position, &rule, 0, 0);
}
int changeRuleFor(int position, int port) {
  FilterRule rule = ruleFor(port);
  return changeRule(position, &rule);
}

int addRoute(const char* destination) {
  RouteEntry route = routeTo(destination);
  return addUserRoute(&route);
}
int replaceRoute(const char* old, const char* destination) {
  RouteEntry route = routeTo(destination);
  return replaceUserRoute(quad(old), kRouteMask, &route, kSource, kUser);
}
int addRoute6(const char* destination) {
  Route6Entry route = route6To(destination);
  return addUserRoute6(&route);
}
int replaceRoute6(const char* old, const char* destination) {
  Route6Entry route = route6To(destination);
  testing::Ip6 key = ip6(old);
  return replaceUserRoute6(key.data(), kRoute6Prefix, &route, kSource, kUser);
}
int deleteRoute6(const char* destination) { return deleteUserRoute6(ip6(destination).data(), kRoute6Prefix); }

int addBridgeAddress6(const char* text, bool tableOnly) {
  Ip6Address entry = bridgeAddress6(text);
  return tableOnly ? addIp6(&entry) : shm_addIp6(&entry);
}

int addManagement(const char* address) {
  ManagementAddress entry = managementAddress(address);
  return addManagementAddr(&entry);
}
int removeManagement(const char* address) {
  ManagementAddress entry = managementAddress(address);
  return removeManagementAddr(&entry);
}
int addManagement6(const char* address) {
  ManagementAddress entry = managementAddress6(address);
  return addManagementAddr(&entry);
}

int addAccount(const char* name, bool administrator, const char* password) {
  UserAccount account = accountOf(name, administrator);
  return addUser(&account, password);
}

int modeEvent(int event) {
  OpModeContext context = {};
  return OpModeState(event, &context);
}

// The engine's record of one interval.
int updateStatistics() {
  uint32_t record[180];
  for (uint32_t i = 0; i < 180; ++i) record[i] = i + 1;
  return shm_updateKestroveStats(record);
}
int updateSessions() {
  uint64_t record[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  return updateDomoStats(record);
}

int fetchChanges() {
  uint32_t mask = 0;
  int result = receiveKestroveEvent(&mask);
  return result == 0 ? static_cast<int>(mask) : result;
}

int inBandGateway() {
  char text[] = "10.2.0.253";
  return setinBandWanGateway(text);
}
int managementIp() {
  char text[] = "192.168.30.1";
  return setManagementIP(text);
}

// A program of somebody else's that writes the word by itself.
int writeStateWord() {
  if (getShmFileBuffering() < 0) return -1;
  shm->operationalState = SHM_STATE_DISABLED;
  return 0;
}

void refuseLock() {
  using Refuse = void (*)(int);
  reinterpret_cast<Refuse>(dlsym(RTLD_DEFAULT, "parkRefuseLock"))(1);
}

// A caller whose nesting has dropped the file lock, on a machine that has no lock to give any more.
int nestWithoutLock() {
  int result = shm_lock() + shm_lock() + shm_unlock();
  refuseLock();
  return result;
}

constexpr Operation kOperations[] = {
    {"item-lan-rate", kOften, {[] { return item(1, 20000); }}},
    {"item-wan-rate", kBrief, {[] { return item(2, 30000); }}},
    {"item-wan-mtu", kBrief, {[] { return item(4, 1400); }}},
    {"item-lan-mtu", kBrief, {[] { return item(5, 1300); }}},
    {"item-compression", kOften, {[] { return item(9, SHM_ON); }}},
    {"item-compression-off", kBrief, {[] { return item(9, SHM_OFF); }}},
    {"item-snmp", kBrief, {[] { return item(11, SHM_ON); }}},
    {"item-snmp-version", 0, {[] { return item(12, 3); }}},
    {"item-web", 0, {[] { return item(13, SHM_ON); }}},
    {"item-serial", kBrief, {[] { return item(14, SHM_ON); }}},
    {"item-engine", 0, {[] { return item(15, SHM_ON); }}},
    {"item-spare", kBrief, {[] { return item(16, 7); }}},
    {"item-ssh", kBrief, {[] { return item(17, SHM_ON); }}},
    {"item-banner", kBrief, {[] { return item(18, SHM_ON); }}},
    {"item-policy-routing", kKernel, {[] { return item(20, SHM_ON); }}},
    {"item-lan-route-set", 0, {[] { return item(25, 1); }}},
    {"item-congestion", 0, {[] { return item(35, 4); }}},
    {"item-logging-off", 0, {[] { return item(36, SHM_OFF); }}},
    {"item-buffering", kBrief, {[] { return item(37, SHM_ON); }}},
    {"item-38", 0, {[] { return item(38, 38); }}},
    {"item-relay-status", kBrief, {[] { return item(40, 4); }}},
    {"item-relay", 0, {[] { return item(41, 1); }}},
    {"item-platform", kBrief, {[] { return item(44, 14); }}},
    {"item-session-timeout", kBrief, {[] { return item(54, 600); }}},
    {"item-flag", kBrief, {[] { return item(55, 1); }}},
    {"net-management-address", kKernel | kBrief, {[] { return networkItem(1, "192.168.30.9"); }}},
    {"net-management-mask", kKernel | kBrief, {[] { return networkItem(2, "255.255.255.0"); }}},
    {"net-lan-address", kKernel | kBrief, {[] { return networkItem(4, "10.1.0.2"); }}},
    {"net-wan-address", kKernel, {[] { return networkItem(7, "10.2.0.2"); }}},
    {"net-lan-gateway", kKernel, {[] { return networkItem(14, "10.1.0.253"); }}},
    {"net-wan-gateway", kKernel, {[] { return networkItem(15, "10.2.0.252"); }}},
    {"in-band-gateway", kKernel, {inBandGateway}},
    {"management-ip", kKernel | kBrief, {managementIp}},
    {"system-name", kOften, {[] { return setShmString(1, "north"); }}},
    {"system-location", 0, {[] { return setShmString(2, "cellar"); }}},
    {"system-contact", kBrief, {[] { return setShmString(3, "bob"); }}},
    {"web-session-id", kBrief, {[] { return setShmString(8, "0123456789abcdef"); }}},
    {"interface-name", 0, {[] { return setInterfaceName(0, "lan7", 16); }}},
    {"state-debug", 0, {[] { return setShmOperationalState(SHM_STATE_DEBUG); }}},
    {"state-configuration", 0, {[] { return setShmOperationalState(SHM_STATE_CONFIGURATION); }}},
    {"state-word", kApart, {writeStateWord}},
    {"notify", kBrief, {[] { return setNotificationStatus(2); }}},
    {"take-notification", 0, {[] { return getNotificationStatus(1); }}},
    {"source-component", kBrief, {[] { return setShmSourceComponent(5); }}},
    {"source-user", 0, {[] { return setEventSourceUsername("bob"); }}},
    {"single-interface", kKernel, {[] { return setSingleInterfaceMode(SHM_ON, 22, 23); }}},
    {"dual-interface", kKernel, {[] { return setSingleInterfaceMode(SHM_OFF, 0, 0); }}},
    {"mode-single-on", kKernel, {[] { return modeEvent(2); }}},
    {"mode-policy-on", kKernel, {[] { return modeEvent(4); }}},
    {"mode-powered-on", kKernel | kBrief, {[] { return modeEvent(1); }}},
    {"mode-management", kKernel, {[] { return modeEvent(12); }}},
    {"policy-routing", kKernel, {[] { return pbrPolicyRule(1), 0; }}},
    {"refresh-servers", kBrief, {refresh_userinterface_apps}},
    {"count-restart", kBrief, {incrKestroveRestartCounter}},
    {"reset-restarts", kBrief, {resetKestroveRestartCounter}},
    {"count-reboot", kBrief, {incrKestroveRebootCounter}},
    {"reset-reboots", 0, {resetKestroveRebootCounter}},
    {"restart-engine", kBrief, {[] { return restart_kestrove(kSource, kUser); }}},
    {"stamp-login", 0, {[] { return setLastLoginTimeStamp("annika"); }}},
    {"task-pid", 0, {[] { return shm_setTaskPid(3, 4711); }}},
    {"fetch-changes", 0, {fetchChanges}},
    {"log-event", kOften, {[] { return logEvent(21, kSource, kUser); }}},
    {"log-other-event", kBrief, {[] { return logEvent(24, 3, "console"); }}},
    {"clear-events", 0, {[] { return clearEventLog(kSource, kUser); }}},
    {"wipe-events", 0, {wipeEventLog}},
    {"update-event", kBrief, {[] { return logSystemUpdateEvent(4, kSource, kUser); }}},
    {"add-user", kOften, {[] { return addAccount("carlo", true, "Pass-word1"); }}},
    {"add-user-again", 0, {[] { return addAccount("carlo", false, "Other.word2"); }}},
    {"add-user-weak", 0, {[] { return addAccount("dieter", false, "weak"); }}},
    {"add-user-row", kBrief, {[] { return addAccount("elena", true, nullptr); }}},
    {"add-password", 0, {[] { return addPassword("frida", "Pass-word3"); }}},
    {"remove-user", 0, {[] { return removeUser("annika"); }}},
    {"remove-other-user", kBrief, {[] { return removeUser("berta"); }}},
    {"add-route", kOften | kKernel, {[] { return addRoute("10.9.0.0"); }}},
    {"add-other-route", kKernel | kBrief, {[] { return addRoute("10.8.0.0"); }}},
    {"replace-route", kKernel, {[] { return replaceRoute("10.5.0.0", "10.7.0.0"); }}},
    {"delete-route", kOften | kKernel, {[] { return deleteUserRoute(quad("10.5.0.0"), kRouteMask); }}},
    {"freshen-routes", kKernel, {[] { return freshenRouteTable(kSource, kUser); }}},
    {"add-all-routes", kKernel, {addAllRoutes}},
    {"add-route6", kKernel, {[] { return addRoute6("2001:db8:9::"); }}},
    {"replace-route6", kKernel, {[] { return replaceRoute6("2001:db8:5::", "2001:db8:7::"); }}},
    {"delete-route6", kKernel, {[] { return deleteRoute6("2001:db8:5::"); }}},
    {"freshen-routes6", kKernel, {[] { return freshenRoute6Table(kSource, kUser); }}},
    {"add-address6", kKernel, {[] { return addBridgeAddress6("2001:db8:b::9", false); }}},
    {"add-address6-row", kKernel | kBrief, {[] { return addBridgeAddress6("2001:db8:b::8", true); }}},
    {"edit-address6", kKernel, {[] { return shm_editIp6Address(0, ip6("2001:db8:b::7").data()); }}},
    {"edit-prefix6", kKernel, {[] { return shm_editIp6Prefix(0, 80); }}},
    {"remove-address6", kKernel, {[] { return removeIp6(ip6(kBridgeAddress6).data()); }}},
    {"insert-rule", kOften, {[] { return insertRuleFor(0, 8080); }}},
    {"insert-rule-behind", kBrief, {[] { return insertRuleFor(1, 8081); }}},
    {"add-rule", 0, {[] { return addRuleFor(2, 8082); }}},
    {"change-rule", 0, {[] { return changeRuleFor(1, 8083); }}},
    {"move-rule", 0, {[] { return moveRule(0, 2); }}},
    {"delete-rule", kOften, {[] { return deleteRule(0); }}},
    {"save-rules", kBrief, {saveRuleTable}},
    {"add-management", kKernel, {[] { return addManagement("192.168.31.1"); }}},
    {"remove-management", kKernel, {[] { return removeManagement("192.168.32.1"); }}},
    {"add-management6", kKernel, {[] { return addManagement6("fd00:31::1"); }}},
    {"statistics", kOften, {updateStatistics}},
    {"sessions", kBrief, {updateSessions}},
    {"reset-stats", 0, {[] { return resetStats(kSource, kUser); }}},
    {"reset-optimization", 0, {[] { return resetOptimizationStats(kSource, kUser); }}},
    {"reset-ratio", kBrief, {[] { return resetCompressionRatio(kSource, kUser); }}},
    {"reset-filter", kBrief, {resetFilterStats}},
    {"load", kOften, {[] { return load_shared_memory(kLoadedFile); }}},
    {"load-fields", kApart, {[] { return load_shared_memory(kLoadedFields); }}},
    {"write", kBrief, {write_shared_memory}},
    {"save", kOften, {save_shared_memory}},
    {"factory-defaults", 0, {[] { return restoreFactoryDefaults(kSource, kUser); }}},
    {"factory-keeping-users", kBrief, {[] { return restoreZELFactoryDefaults(kSource, kUser); }}},
    {"zip-type", kBrief, {[] { return setZipType(3); }}},
    {"login-from", kBrief, {[] { return setLoginFrom(4); }}},
    {"gateway-id", kBrief, {setGatewayId}},
    {"name-server", 0, {[] { return changeDnsServerIp(quad("10.1.0.53")); }}},
    {"no-resolver", 0, {removeResolvConf}},
    // A front end's own sequences.
    {"own-nesting",
     kKernel | kBrief,
     {shm_lock, [] { return setShmString(1, "nested"); }, [] { return addRoute("10.10.0.0"); }, shm_unlock}},
    {"lost-signal",
     kKernel | kBrief,
     {[] { return shm_setTaskPid(kEngineTask, kNobodysPid); }, [] { return item(38, 39); },
      [] { return addRoute("10.11.0.0"); }, [] { return addRoute("10.12.0.0"); }}},
    {"unlocked-name", kApart, {nestWithoutLock, [] { return setShmString(1, "unlocked"); }}},
    {"unlocked-place", kApart, {nestWithoutLock, [] { return setShmString(2, "unlocked"); }}},
    {"build", kBuilds | kBrief, {[] { return init_shared_memory(kConfigFile, kEventFile); }}},
};

}  // namespace

std::span<const Operation> operations() { return kOperations; }

}  // namespace kestrove::explore
