// SPDX-License-Identifier: Apache-2.0
#include "bench/fresh_process.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/shm.h>
#include <unistd.h>

#include "bench/turns.h"
#include "kestrove/kestrove.h"

namespace bench {
namespace {

constexpr int kProcesses = 100;

bool readThroughTheLibrary() {
  uint32_t product;
  if (getKestroveProduct(&product) != 0) return false;
  shm_detach();
  return true;
}

// Attach, open, lock pair, detach.
bool readByHand() {
  void* segment = shmat(shmget(SHM_KEY, SHM_SIZE, 0), nullptr, 0);
  int fd = open("/var/lock/shm", O_RDWR | O_CLOEXEC);
  struct flock request = {};
  request.l_type = F_WRLCK;
  if (segment == reinterpret_cast<void*>(-1) || fcntl(fd, F_SETLKW, &request) != 0) return false;
  static_cast<void>(static_cast<const volatile ShmData*>(segment)->config.productId);  // read, though for nothing
  request.l_type = F_UNLCK;
  return fcntl(fd, F_SETLK, &request) == 0 && shmdt(segment) == 0;
}

// Seconds that a process of its own needed.
double freshProcess(const char* kind) {
  char command[64];
  snprintf(command, sizeof command, "exec /proc/%d/exe %s %s", getpid(), kFreshProcess, kind);
  FILE* output = popen(command, "r");
  double time = -1;
  if (!output || fscanf(output, "%lf", &time) != 1 || pclose(output) != 0) return -1;
  return time * 1e-9;
}

void firstRead(benchmark::State& state) {
  auto timed = [&state](const char* kind) {
    return [&state, kind](int) {
      double seconds = freshProcess(kind);
      if (seconds < 0) state.SkipWithError("the process failed");
      return seconds;
    };
  };
  inTurns(state, timed("library"), timed("floor"), kProcesses);
}
BENCH_ROW(firstRead)->Unit(benchmark::kMicrosecond);

}  // namespace

int beFreshProcess(const char* kind) {
  bool library = strcmp(kind, "library") == 0;
  double begin = secondsOn(CLOCK_PROCESS_CPUTIME_ID);
  bool good = library ? readThroughTheLibrary() : readByHand();
  double end = secondsOn(CLOCK_PROCESS_CPUTIME_ID);
  printf("%.0f\n", (end - begin) * 1e9);
  return good ? 0 : 1;
}

}  // namespace bench
