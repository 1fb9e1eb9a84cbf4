// SPDX-License-Identifier: Apache-2.0
// Telling the engine that something changed, and what.
#include "kestrove/engine.h"

#include <signal.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>

#include "kestrove/codes.h"
#include "kestrove/system.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/pending.h"
#include "sys/probe.h"
#include "sys/stream.h"

namespace kestrove {
namespace {

constexpr char kPidFile[] = "/var/log/curpid";
constexpr int kPidLineSize = 78;
constexpr int kLowestPid = 2;  // 0, 1 and negative numbers would signal others

// 0 when there is none: no file, an empty one, no number.
int32_t pidFromFile() {
  sys::Stream file(fopen(kPidFile, "re"));
  char line[kPidLineSize];
  if (!file || !fgets(line, sizeof line, file.get())) return 0;
  long pid = strtol(line, nullptr, 10);
  return static_cast<int32_t>(std::clamp<long>(pid, INT32_MIN, INT32_MAX));
}

int32_t enginePid() {
  return shm->config.productId == SHM_PRODUCT_ZEL ? pidFromFile() : shm->taskPids[SHM_TASK_ENGINE];
}

bool ratesChanged() { return (shm->pendingChanges & (SHM_CHANGE_LAN_RATE | SHM_CHANGE_WAN_RATE)) != 0; }
// That product takes up nothing but rates while it runs.
bool needsRestart() { return shm->config.productId == SHM_PRODUCT_UNBRIDGED && !ratesChanged(); }

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int notifyKestrove(void) {
  StoreLock lock;
  if (!lock) return -1;
  int32_t pid = enginePid();
  if (pid < kLowestPid) return -1;
  bool restart = needsRestart();  // asked before the signal: a quick engine fetches the marks at once
  if (kill(pid, SIGUSR1) != 0) {
    lock.leaveHeld();  // the caller's process keeps this level of the lock: kept on purpose
    return fail(SHM_ESYSTEM);
  }
  KESTROVE_PROBE1(engine_notified, pid);
  // Its failure does not undo the signal, which was sent.
  if (restart) restart_kestrove(SHM_SOURCE_SYSTEM, "--");
  return 0;
}

int receiveKestroveEvent(uint32_t* mask) {
  if (!mask) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  *mask = takePending();
  return 0;
}

int kestrove_mark(uint32_t changes) {
  StoreLock lock;
  if (!lock) return -1;
  markPending(changes);
  return 0;
}
