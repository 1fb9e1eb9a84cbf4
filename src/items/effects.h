// SPDX-License-Identifier: Apache-2.0
// What a setter does after it changed the store.
#pragma once

#include "kestrove/engine.h"
#include "kestrove/opmode.h"
#include "kestrove/persistence.h"
#include "store/change_save.h"
#include "store/mode.h"
#include "store/pending.h"

namespace kestrove {

// What changed is marked for the engine, which is signalled to fetch it. A signal that cannot be sent keeps its level
// of the lock and does not fail the setter.
inline void markAndSignalUnlessDebugging(uint32_t pending) {
  if (pending == 0 || debugMode()) return;
  markPending(pending);
  notifyKestrove();
}

// The record that drives the operating modes, for a caller that holds the lock.
inline OpModeContext heldContext() {
  OpModeContext context = {};
  context.mode = shm->config.opModeState;
  context.l7Mode = context.l7ModeCopy = shm->config.opModeSubState;
  context.locked = 1;
  return context;
}

}  // namespace kestrove
