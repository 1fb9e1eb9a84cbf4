// SPDX-License-Identifier: Apache-2.0
// A process that works on the store, told by the explorer what to do; its parent forks a fresh one for every order.
#include <dlfcn.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "kestrove/kestrove.h"
#include "tests/explore/operations.h"
#include "tests/explore/park.h"

namespace kestrove::explore {
namespace {

constexpr int kLine = 3;

template <class Function>
Function* preloaded(const char* name) {
  auto* found = reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
  if (found) return found;
  fprintf(stderr, "explore-worker: to be started with the parking library, which has %s\n", name);
  exit(2);
}
#define PRELOADED(name) preloaded<decltype(name)>(#name)

// Found before the first fork.
struct Parking {
  decltype(parkEnable)* enable = PRELOADED(parkEnable);
  decltype(parkHere)* here = PRELOADED(parkHere);
  decltype(parkResult)* result = PRELOADED(parkResult);
};

void runCalls(const Operation& operation, const Parking& parking) {
  for (int i = 0; i < kMostCalls && operation.call[i]; ++i) {
    if (i > 0) parking.here(kParkCall);
    shm_errno = 0;
    int value = operation.call[i]();
    parking.result(value, shm_errno);
  }
  parking.here(kParkDone);
}

[[noreturn]] void work(const Command& command, const Parking& parking) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const Operation& operation = operations()[static_cast<size_t>(command.operation)];
  if (!command.parks) _exit(operation.call[0]() & 0xff);
  parking.enable(kLine);
  runCalls(operation, parking);
  _exit(0);
}

void tellEnd(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) != child) continue;
  Report report = {};
  report.park = kParkEnded;
  report.pid = child;
  report.status = status;
  if (write(kLine, &report, sizeof report) != sizeof report) exit(0);
}

// Until the explorer is gone.
int serve() {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  Parking parking;
  Command command;
  while (read(kLine, &command, sizeof command) == sizeof command) {
    pid_t child = fork();
    if (child == 0) work(command, parking);
    tellEnd(child);
  }
  return 0;
}

int list() {
  for (const Operation& operation : operations()) {
    int calls = 0;
    while (calls < kMostCalls && operation.call[calls]) ++calls;
    printf("%s %u %d\n", operation.name, operation.flags, calls);
  }
  return 0;
}

}  // namespace
}  // namespace kestrove::explore

using namespace kestrove::explore;

// Programs that an operation starts are not watched.
int main(int argc, char** argv) {
  unsetenv("LD_PRELOAD");
  if (argc == 2 && strcmp(argv[1], "list") == 0) return list();
  if (argc == 2 && strcmp(argv[1], "setup") == 0) return setUp();
  if (argc == 2 && strcmp(argv[1], "serve") == 0) return serve();
  fprintf(stderr, "usage: explore-worker list|setup|serve\n");
  return 2;
}
