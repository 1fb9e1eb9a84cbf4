// SPDX-License-Identifier: Apache-2.0
// The whole store as text, for support staff.
#include <stdio.h>
#include <sys/shm.h>

#include "dump/sections.h"
#include "kestrove/dump.h"
#include "kestrove/segment.h"
#include "store/codes.h"
#include "store/segment.h"

namespace kestrove {
namespace {

struct Section {
  std::string_view heading;
  void (*dump)(sys::TextWriter& out);
};

constexpr Section kSections[] = {
    {"", dumpState},
    {"-->   Files     ------\n", dumpFiles},
    {"-->   Users    ------\n", dumpUsers},
    {"-->   Config    ------\n", dumpConfig},
    {"-->   Operational Stats\n-->   Notifications --\n", dumpOperationalStats},
    {"-->   Interface Stats ------\n", dumpInterfaceStats},
    {"-->   Qos Stats    ---\n", dumpQosStats},
    {"-->   Proc Stats   ---\n", dumpTasks},
    {"-->   Domo Stats   ---\n", dumpSessionEngine},
    {"-->   IPv4 Route Table  ---\n", dumpRoutes},
    {"-->   IPv6 Route Table  ---\n", dumpRoutes6},
    {"-->   Filter Table ---\n", dumpRules},
    {"-->   Event log ------\n", nullptr},  // printEventLog writes it
};

// Runs the sections on a stream; those of the whole dump have their headings. The result is about the store alone: a
// stream that takes no more tells its owner by ferror().
template <class Dump>
[[nodiscard]] int dumpTo(FILE* stream, Dump dump) {
  if (!attachStore()) return -1;
  sys::StreamTarget target{stream ? stream : stdout};
  sys::TextWriter out(target);
  dump(out);
  static_cast<void>(out.flush());
  return 0;
}

void dumpSections(sys::TextWriter& out) {
  for (const Section& section : kSections) {
    out.text(section.heading);
    if (section.dump) section.dump(out);
  }
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int dumpSharedMemory(FILE* stream) {
  if (dumpTo(stream, dumpSections) != 0) return -1;
  printEventLog(stream);  // cannot fail: the store is attached by now
  fputc('\n', stream ? stream : stdout);
  return 0;
}

// Each exported name has debug information of its own, which gcc would take away by folding equal functions into one.
#if defined(__GNUC__) && !defined(__clang__)
#define KEPT_APART [[gnu::no_icf]]
#else
#define KEPT_APART
#endif

KEPT_APART int printSharedMemory(FILE* stream) { return dumpSharedMemory(stream); }

KEPT_APART int printTelemetry(FILE* stream) { return dumpSharedMemory(stream); }

int printRouteInfo(FILE* stream) { return dumpTo(stream, dumpRoutes); }

int printRoute6Info(FILE* stream) { return dumpTo(stream, dumpRoutes6); }

int printSharedMemoryStats(void) {
  printf("Accessing shared memory by key %u\n", SHM_KEY);
  struct shmid_ds segment;
  int id = shmget(SHM_KEY, 1, 0);
  if (id == -1 || shmctl(id, IPC_STAT, &segment) == -1) {
    perror("Error getting shared memory ID");
    return -1;
  }
  printf("Shared memory key: %u\n", SHM_KEY);
  printf("Size: %u\n", static_cast<unsigned>(segment.shm_segsz));
  printf("Number of attached processes: %d\n", static_cast<int>(segment.shm_nattch));
  return 0;
}

const char* strOperationalState(int code) { return shm_getMessage(&kOperationalStateNames, code); }

const char* strCongestionControl(int code) { return shm_getMessage(&kCongestionNames, code); }

const char* strDDupState(int code) { return shm_getMessage(&kCompressionNames, code); }
