#include "bench/fresh_process.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/shm.h>
#include <time.h>
#include <unistd.h>

#include "kestrove/kestrove.h"

namespace bench {
namespace {

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
  uint32_t product = static_cast<const ShmData*>(segment)->config.productId;
  benchmark::DoNotOptimize(product);
  request.l_type = F_UNLCK;
  return fcntl(fd, F_SETLK, &request) == 0 && shmdt(segment) == 0;
}

double nanoseconds() {
  timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
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

void measure(benchmark::State& state, const char* kind) {
  for (auto _ : state) {
    double seconds = freshProcess(kind);
    if (seconds < 0) return state.SkipWithError("the process failed");
    state.SetIterationTime(seconds);
  }
}

void firstRead(benchmark::State& state) { measure(state, "library"); }
void floorFirstRead(benchmark::State& state) { measure(state, "floor"); }
BENCHMARK(floorFirstRead)->UseManualTime()->Iterations(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(firstRead)->UseManualTime()->Iterations(100)->Unit(benchmark::kMicrosecond);

}  // namespace

int beFreshProcess(const char* kind) {
  bool library = strcmp(kind, "library") == 0;
  double begin = nanoseconds();
  bool good = library ? readThroughTheLibrary() : readByHand();
  double end = nanoseconds();
  printf("%.0f\n", end - begin);
  return good ? 0 : 1;
}

}  // namespace bench
