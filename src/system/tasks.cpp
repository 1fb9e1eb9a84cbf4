// SPDX-License-Identifier: Apache-2.0
// Process ids of the monitored tasks.
#include "kestrove/system.h"
#include "store/lock.h"

namespace {

// Slot 0 exists and is out of reach here: kept on purpose. No code is set for a number outside.
bool reachable(int task) { return task >= 1 && task < SHM_TASKS; }

}  // namespace

using namespace kestrove;

int32_t* shm_getMonitoredTaskPointer(void) {
  StoreLock lock;
  return lock ? shm->taskPids : nullptr;
}

int shm_getTaskPid(int task) {
  if (!reachable(task)) return -1;
  StoreLock lock;
  return lock ? shm->taskPids[task] : -1;
}

int shm_setTaskPid(int task, int pid) {
  if (!reachable(task)) return -1;
  StoreLock lock;
  if (!lock) return -1;
  shm->taskPids[task] = pid;
  return 0;
}
