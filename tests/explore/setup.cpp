// SPDX-License-Identifier: Apache-2.0
// The store that every order starts from.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/explore/operations.h"
#include "tests/explore/samples.h"
#include "tests/support/ports.h"

namespace kestrove::explore {
namespace {

constexpr char kSource[] = "setup";

// A bridge may be missing in a kernel; what is asked of br0 here is addresses, which either kind of device has.
// Addresses that are being tried out on the link would change by themselves.
constexpr const char* kPrepareKernel[] = {
    "for all in /proc/sys/net/ipv6/conf/*/accept_dad; do echo 0 > $all; done",
    "for all in /proc/sys/net/ipv6/conf/*/accept_ra; do echo 0 > $all; done",
    "ip link add br0 type bridge 2> /dev/null || ip link add br0 type veth peer name br0-end",
    "ip link set br0 up",
};

constexpr const char* kFolders[] = {"/var/lock", "/etc/config", "/var/log", "/var/log/kestrove", "/old_dir"};

constexpr char kLoadedRows[] =
    "SYS_LOCATION              branch\n"
    "INTERNET_RATE             45000\n"
    "ROUTE                     10.20.0.0 255.255.0.0 192.168.30.2 3\n"
    "SELEC_ACCEL               10.4.0.0 255.255.0.0 0.0.0.0 0.0.0.0 6 0 0 443 443 4 ACCEL 20000 1 3\n"
    "USER_ACCOUNT              gustav 1 0 1600000000\n";

constexpr char kLoadedWords[] =
    "SYS_LOCATION              branch\n"
    "INTERNET_RATE             45000\n";

int complaints = 0;

void expect(bool good, const char* what) {
  if (good) return;
  fprintf(stderr, "explore: %s failed with code %u\n", what, shm_errno);
  ++complaints;
}

void writeText(const char* path, const char* text) {
  FILE* file = fopen(path, "we");
  expect(file && fputs(text, file) >= 0 && fclose(file) == 0, path);
}

void prepareSystem() {
  for (const char* folder : kFolders) mkdir(folder, 0755);
  for (const char* line : kPrepareKernel) expect(system(line) == 0, line);
  writeText("/etc/resolv.conf", "nameserver 10.1.0.1");
  writeText(kLoadedFile, kLoadedRows);
  writeText(kLoadedFields, kLoadedWords);
}

void setFields(ConfigRecord& config) {
  testing::namePorts("base0", "plan0", "pwan0");
  testing::numberVlans(12, 13);
  strcpy(config.managementInterfaceName, "eth2");
  strcpy(config.lanInterfaceName, "lan0");
  strcpy(config.wanInterfaceName, "wan0");
  config.loggingOperState = SHM_ON;
  config.singleInterfaceMode = SHM_OFF;
  config.pbrOperState = SHM_OFF;
  config.kestroveOperState = SHM_OFF;
  config.snmpOperState = config.httpOperState = config.sshdOperState = SHM_OFF;
  config.compression = SHM_OFF;
  config.lanIpAddress = quad("10.1.0.1");
  config.lanIpAddressMask = config.wanIpAddressMask = quad("255.255.255.0");
  config.wanIpAddress = quad("10.2.0.1");
  config.lanGateway = quad("10.1.0.254");
  config.wanGateway = quad("10.2.0.254");
  config.managementAddress = quad("192.168.30.1");
  config.managementAddressMask = quad("255.255.0.0");
  shm->operationalState = SHM_STATE_OPERATIONAL;
  shm->notificationStatus = 1;
  shm->pendingChanges = 0;
  shm->statistics.accumulationInterval = 5;
}

void fillAddresses() {
  ManagementAddress first = managementAddress("192.168.30.1");
  ManagementAddress second = managementAddress("192.168.32.1");
  ManagementAddress third = managementAddress6("fd00:30::1");
  expect(addManagementAddr(&first) == 0, "adding a management address");
  expect(addManagementAddr(&second) == 0, "adding another management address");
  expect(addManagementAddr(&third) == 0, "adding an IPv6 management address");
  Ip6Address bridge = bridgeAddress6(kBridgeAddress6);
  expect(shm_addIp6(&bridge) == 0, "adding an address of the bridge");
}

void fillRoutes() {
  for (const char* destination : {"10.4.0.0", "10.5.0.0", "10.6.0.0"}) {
    RouteEntry route = routeTo(destination);
    expect(addUserRoute(&route) == 0, destination);
  }
  for (const char* destination : {"2001:db8:4::", "2001:db8:5::"}) {
    Route6Entry route = route6To(destination);
    expect(addUserRoute6(&route) == 0, destination);
  }
}

void fillTables() {
  fillAddresses();
  fillRoutes();
  for (int port : {80, 443, 22}) {
    FilterRule rule = ruleFor(port);
    expect(insertRule(0, &rule) == 0, "inserting a rule");
  }
  for (const char* name : {"annika", "berta"}) {
    UserAccount account = accountOf(name, true);
    expect(addUser(&account, "Pass-word0") == 0, name);
  }
  for (uint32_t id : {20u, 28u, 36u}) expect(logEvent(id, 0, kSource) == 0, "logging an event");
}

}  // namespace

int setUp() {
  prepareSystem();
  expect(init_shared_memory(kConfigFile, kEventFile) == 0, "building the store");
  if (!shm) return -1;
  setFields(shm->config);
  fillTables();
  shm->pendingChanges = 0;
  expect(write_shared_memory() == 0, "saving the store");
  return complaints ? -1 : 0;
}

}  // namespace kestrove::explore
