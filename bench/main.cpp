// SPDX-License-Identifier: Apache-2.0
// The entry of the benchmarks: a store of their own, in the sandbox.
#include <benchmark/benchmark.h>
#include <stdio.h>
#include <string.h>
#include <sys/shm.h>
#include <unistd.h>

#include "bench/fresh_process.h"
#include "kestrove/kestrove.h"
#include "lifecycle/fresh.h"
#include "store/segment.h"
#include "store/text.h"

namespace {

constexpr char kInside[] = "/run/kestrove/inside";

bool makeStore() {
  if (create_lock_file() != 0 || kestrove::createSegment() != kestrove::Segment::kCreated) return false;
  kestrove::layOutRouteTables();
  shm->config.minRate = 10000;
  shm->config.minMtu = 576;
  kestrove::resetRuleTable();
  kestrove::setField(shm->config.configFileName, "/etc/config/kestrove.conf");
  kestrove::setField(shm->config.eventLogFileName, "/var/log/kestrove/event.log");
  shm->config.loggingOperState = SHM_ON;
  shm->operationalState = SHM_STATE_OPERATIONAL;
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && strcmp(argv[1], bench::kFreshProcess) == 0) return bench::beFreshProcess(argv[2]);
  if (access(kInside, F_OK) == -1) {
    fprintf(stderr, "%s runs in the sandbox only\n", argv[0]);
    return 99;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  if (!makeStore()) {
    perror("kestrove-bench: no store");
    return 2;
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
