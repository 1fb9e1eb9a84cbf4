// SPDX-License-Identifier: Apache-2.0
// The counters that stop an endless cycle of engine starts and reboots.
#include "kestrove/persistence.h"
#include "kestrove/system.h"
#include "store/fail.h"
#include "store/lock.h"

namespace {
constexpr uint32_t kLimit = 5;
}

using namespace kestrove;

// Not saved: the count starts again from the file's value after each boot.
int incrKestroveRestartCounter(void) {
  StoreLock lock;
  if (!lock) return -1;
  return ++shm->config.kestroveRestartCount >= kLimit ? fail(SHM_ESTARTS) : 0;
}

int resetKestroveRestartCounter(void) {
  StoreLock lock;
  if (!lock) return -1;
  shm->config.kestroveRestartCount = 0;
  return 0;
}

// Saved, so that the count survives the reboot; at the limit nothing is written.
int incrKestroveRebootCounter(void) {
  StoreLock lock;
  if (!lock) return -1;
  return ++shm->config.kestroveRebootCount >= kLimit ? fail(SHM_EREBOOTS) : save_shared_memory();
}

int checkKestroveRebootCounter(void) {
  StoreLock lock;
  if (!lock) return -1;
  return shm->config.kestroveRebootCount >= kLimit ? fail(SHM_EREBOOTS) : 0;
}

int resetKestroveRebootCounter(void) {
  StoreLock lock;
  if (!lock) return -1;
  shm->config.kestroveRebootCount = 0;
  return save_shared_memory();
}
