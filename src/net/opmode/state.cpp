// SPDX-License-Identifier: Apache-2.0
// Events of the operating modes, dispatched by the stored mode.
#include "kestrove/codes.h"
#include "kestrove/engine.h"
#include "kestrove/opmode.h"
#include "kestrove/persistence.h"
#include "net/opmode/modes.h"
#include "net/opmode/reapply.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/mode.h"
#include "store/pending.h"
#include "store/segment.h"

using namespace kestrove;
using namespace kestrove::opmode;

namespace {

constexpr OpModeHandler kHandlers[kModes] = {opModeDualIf, opModeSingleOnly, opModeSinglePBR};

void fill(int event, OpModeContext& context) {
  const ConfigRecord& config = shm->config;
  context.word5 = context.word6 = 0;
  context.mode = config.opModeState;
  context.l7Mode = context.l7ModeCopy = config.opModeSubState;
  if (event == SHM_MODE_EVENT_VLAN_CHANGE) return;  // the caller's ids
  context.wanVlanId = context.wanVlanIdCopy = config.wanVlanId;
  context.lanVlanId = context.lanVlanIdCopy = config.lanVlanId;
}

bool changesMode(int event) { return event > SHM_MODE_EVENT_POWERED_ON && event <= SHM_MODE_EVENT_VLAN_CHANGE; }

// Debug Mode leaves the routes alone, but not the addresses that went with the interfaces.
void reapply() {
  if (configurationMode()) return;
  reapplyBridgeAddresses6();
  if (!debugMode()) reapplyRoutes();
}

// Neither a signal that cannot be sent nor a missing engine stops a transition.
void markAndSignal() {
  markPending(SHM_CHANGE_MODE);
  notifyKestrove();
}

}  // namespace

// In Debug Mode the engine is signalled all the same: kept on purpose.
int OpModeState(int event, OpModeContext* context) {
  if (!context) return fail(SHM_EINVAL);
  StoreLock lock(context->locked == 0);
  HeldByCaller held(context->locked != 0 && shm_lock_count > 0);
  if (!lock || !attachStore()) return -1;
  uint32_t mode = shm->config.opModeState;
  if (mode >= kModes || event < 0 || event > SHM_MODE_EVENT_DNS) return fail(SHM_EINVAL);
  fill(event, *context);
  kHandlers[mode](event, context);  // no mode refuses an event
  // After every event: rebuilt interfaces come without addresses.
  addAddressesToInterfaces(context);
  shm->config.opModeState = context->mode;  // before the engine is signalled, which may look at once
  if (handles(mode, event)) reapply();
  if (changesMode(event) && !configurationMode()) markAndSignal();
  save_shared_memory();  // its failure leaves a code; the interfaces are what they are
  return 0;
}
