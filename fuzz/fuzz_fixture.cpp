// SPDX-License-Identifier: Apache-2.0
#include "fuzz/fuzz_fixture.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <syslog.h>
#include <unistd.h>

#include "kestrove/kestrove.h"

namespace kestrove::fuzzing {
namespace {

ShmData store;

void demand(bool condition, const char* what) {
  if (condition) return;
  fprintf(stderr, "the store is damaged: %s\n", what);
  abort();
}

}  // namespace

void prepareProcess() {
  static bool prepared = false;
  if (prepared) return;
  prepared = true;
  if (access("/run/kestrove/inside", F_OK) != 0) {
    fprintf(stderr, "This program changes the system it runs on: run it in the sandbox.\n");
    exit(2);
  }
  setlogmask(LOG_MASK(LOG_EMERG));
  if (!freopen("/dev/null", "w", stdout) || create_lock_file() != 0) exit(2);
}

void freshStore() {
  prepareProcess();
  memset(&store, 0, sizeof store);
  for (RouteEntry& slot : store.routes.slot) slot.inUse = slot.next = SHM_NO_SLOT;
  for (Route6Entry& slot : store.routes6.slot) slot.inUse = slot.next = SHM_NO_SLOT;
  store.operationalState = SHM_STATE_CONFIGURATION;
  store.config.ipv6Support = SHM_ON;
  store.config.minRate = 10000;
  store.filterTable.ruleCount = 1;
  store.filterTable.rule[0] = {};
  shm = &store;
  manAddrEnt = {};
}

void checkStore() {
  demand(shm == &store && shm_lock_count == 0, "attachment or lock");
  demand(store.operationalState == SHM_STATE_CONFIGURATION, "state");
  demand(store.config.userCount >= 0 && store.config.userCount <= SHM_USERS, "users");
  demand(store.ip6Count >= 0 && store.ip6Count <= SHM_IP6_ADDRESSES, "IPv6 addresses");
  demand(store.managementAddressCount >= 0 && store.managementAddressCount <= SHM_MANAGEMENT_ADDRESSES, "addresses");
  demand(store.filterTable.ruleCount >= 1 && store.filterTable.ruleCount <= SHM_RULES, "rules");
  demand(store.routes.head < SHM_ROUTES && store.routes6.head6 < SHM_ROUTES6, "routes");
}

}  // namespace kestrove::fuzzing
