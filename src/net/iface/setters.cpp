// SPDX-License-Identifier: Apache-2.0
// Two addresses that front ends give as text.
#include "kestrove/codes.h"
#include "kestrove/engine.h"
#include "kestrove/iface.h"
#include "kestrove/items.h"
#include "kestrove/persistence.h"
#include "kestrove/text.h"
#include "store/change_save.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/mode.h"
#include "store/pending.h"
#include "store/segment.h"

using namespace kestrove;

namespace {

constexpr char kNoUser[] = "--";

void saveMarkAndSignal() {
  ChangeSave save;
  save.run(save_shared_memory);
  markPending(SHM_CHANGE_INTERFACE);
  notifyKestrove();
  save.leaveCode();
}

// Saves and tells the engine whether or not the text is an address: kept on purpose. Without a store the text is
// rewritten all the same. The parser's result and, for a text that is no address, its code.
int store(char* text, int item) {
  StoreLock lock;  // for the whole work; without it each step does what it can
  uint32_t address = 0;
  int result = parseIpv4Address(text, &address);
  uint32_t code = shm_errno;
  if (lock || attachStore()) {
    if (result == 0) setNetworkConfigItem(item, &address, SHM_SOURCE_SYSTEM, kNoUser);
    if (!configurationMode()) saveMarkAndSignal();
  }
  if (result != 0) shm_errno = code;
  return result;
}

}  // namespace

int setinBandWanGateway(char* text) {
  if (!text) return fail(SHM_EINVAL);
  store(text, SHM_NET_WAN_GATEWAY);
  return 0;
}

int setManagementIP(char* text) { return text ? store(text, SHM_NET_MANAGEMENT_ADDRESS) : fail(SHM_EINVAL); }
