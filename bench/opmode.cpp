// SPDX-License-Identifier: Apache-2.0
// A move between operating modes and back, beside the same commands run from shell scripts.
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <initializer_list>

#include "bench/floors.h"
#include "bench/turns.h"
#include "kestrove/kestrove.h"
#include "lifecycle/fresh.h"
#include "sys/interface_address.h"
#include "sys/interface_request.h"

namespace {

enum { kPoweredOn = 1, kSingleOn = 2, kSingleOff = 3 };

// The commands of each move, before and after its interfaces are cleared and raised: an interface that stayed down
// would be taken down for nothing.
struct Script {
  const char* path;
  const char* text;
};

constexpr Script kToVlans = {"/tmp/to_vlans.sh",
                             "/usr/sbin/brctl delif br0 eth0  > /dev/null 2>&1\n"
                             "/usr/sbin/brctl delif br0 eth1  > /dev/null 2>&1\n"
                             "ifconfig br0 down  > /dev/null 2>&1 \n"
                             "/usr/sbin/brctl delbr br0  > /dev/null 2>&1\n"
                             "/sbin/vconfig add eth0 12 > /dev/null 2>&1\n"
                             "/sbin/vconfig add eth0 13 > /dev/null 2>&1\n"};
constexpr Script kBridgeVlan = {"/tmp/bridge_vlan.sh",
                                "/usr/bin/init-bridging eth0.12 eth1  > /dev/null 2>&1\n"
                                "ifconfig br0 up  > /dev/null 2>&1 \n"};
constexpr Script kToPorts = {"/tmp/to_ports.sh",
                             "/usr/sbin/brctl delif br0 eth0.12  > /dev/null 2>&1\n"
                             "/usr/sbin/brctl delif br0 eth1  > /dev/null 2>&1\n"
                             "ifconfig br0 down  > /dev/null 2>&1 \n"
                             "/usr/sbin/brctl delbr br0  > /dev/null 2>&1\n"
                             "/sbin/ifconfig eth0.12  down> /dev/null 2>&1\n"
                             "/sbin/ifconfig eth1  down> /dev/null 2>&1\n"
                             "/sbin/ifconfig eth0.13  down> /dev/null 2>&1\n"
                             "/sbin/vconfig rem eth0.12 > /dev/null 2>&1\n"
                             "/sbin/vconfig rem eth0.13 > /dev/null 2>&1\n"};
constexpr Script kBridgePorts = {"/tmp/bridge_ports.sh",
                                 "/usr/bin/init-bridging eth0 eth1  > /dev/null 2>&1\n"
                                 "ifconfig br0 up  > /dev/null 2>&1 \n"};

void write(const Script& script) {
  FILE* file = fopen(script.path, "w");
  if (!file) exit(2);
  fputs(script.text, file);
  fclose(file);
}

bool run(const Script& script) { return system(script.path) == 0; }

void clear(std::initializer_list<const char*> names) {
  kestrove::sys::InterfaceAddresses addresses(kestrove::sys::openSocket(AF_INET, SOCK_DGRAM));
  for (const char* name : names) (void)addresses.configure(name, 0, 0, 0);
}

// Whatever other measurements left in the tables.
void emptyTables() {
  kestrove::layOutRouteTables();
  kestrove::resetRuleTable();
  shm->ip6Count = shm->managementAddressCount = 0;
}

void namePorts() {
  shm->operationalState = SHM_STATE_OPERATIONAL;
  shm->config.opModeState = 0;
  strcpy(shm->config.bridgeRouterPhysicalName, "eth0");
  strcpy(shm->config.physicalWanInterfaceName, "eth0");
  strcpy(shm->config.physicalLanInterfaceName, "eth1");
  shm->config.lanVlanId = 12;
  shm->config.wanVlanId = 13;
}

bool raise(int event) {
  OpModeContext context = {};
  return OpModeState(event, &context) == 0;
}

// Both start from the bridge of the dual mode.
void prepare() {
  bench::useTheRealShell();
  for (const Script& script : {kToVlans, kBridgeVlan, kToPorts, kBridgePorts}) {
    write(script);
    chmod(script.path, 0755);
  }
  emptyTables();
  namePorts();
  if (access("/sys/class/net/br0", F_OK) != 0 && !raise(kPoweredOn)) exit(2);
}

void runTheCommands(benchmark::State& state) {
  bool done = run(kToVlans);
  clear({"eth0.12", "eth1", "eth0.13"});
  done = run(kBridgeVlan) && run(kToPorts) && done;
  clear({"eth0", "eth1", "eth0"});
  if (!run(kBridgePorts) || !done) state.SkipWithError("a script failed");
}

void changeMode(benchmark::State& state) {
  if (!raise(kSingleOn) || !raise(kSingleOff)) state.SkipWithError("the mode did not change");
}

void modeChange(benchmark::State& state) {
  prepare();
  auto work = [&state] { changeMode(state); };
  bench::inTurns(state, bench::byClock(work), bench::byClock([&state] { runTheCommands(state); }));
  if (shm->config.opModeState != 0) state.SkipWithError("not back in the dual mode");
}
BENCH_ROW(modeChange)->Unit(benchmark::kMillisecond);

}  // namespace
