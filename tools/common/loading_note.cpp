// SPDX-License-Identifier: Apache-2.0
#include "tools/common/loading_note.h"

#include <unistd.h>

#include <cstdio>

#include "kestrove/items.h"
#include "kestrove/segment.h"
#include "tools/common/process_time.h"

namespace tools {
namespace {

constexpr char kNote[] = "/var/lock/shm.loading";

struct Loader {
  int pid = 0;
  unsigned long long startTime = 0;  // tells a reused process id from the loader
  uint32_t state = 0;
};

bool readNote(Loader& loader) {
  FILE* file = fopen(kNote, "re");
  if (!file) return false;
  int fields = fscanf(file, "%d %llu %u", &loader.pid, &loader.startTime, &loader.state);
  fclose(file);
  return fields == 3;
}

bool alive(const Loader& loader) { return loader.pid > 0 && startTimeOf(loader.pid) == loader.startTime; }

}  // namespace

LoadingNote::LoadingNote(uint32_t state) : written_(false) {
  FILE* file = fopen(kNote, "we");
  if (!file) return;
  fprintf(file, "%d %llu %u\n", getpid(), startTimeOf(getpid()), state);
  written_ = fclose(file) == 0;
}

LoadingNote::~LoadingNote() { forgetLoading(); }

void forgetLoading() { unlink(kNote); }

std::string repairAbandonedLoad() {
  Loader loader;
  if (!readNote(loader) || alive(loader)) return {};
  unlink(kNote);
  if (getShmOperationalState() != SHM_STATE_CONFIGURATION || loader.state > SHM_STATE_DEBUG) return {};
  setShmOperationalState(loader.state);
  return "process " + std::to_string(loader.pid) + " died while it loaded a configuration; state " +
         std::to_string(loader.state) + " put back";
}

}  // namespace tools
