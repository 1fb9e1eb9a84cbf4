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

constexpr int kManagementItem = 1;
constexpr int kGatewayItem = 15;
constexpr uint32_t kNoSource = 0;
constexpr char kNoUser[] = "--";

void tellEngine() {
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
    if (result == 0) setNetworkConfigItem(item, &address, kNoSource, kNoUser);
    if (!configurationMode()) tellEngine();
  }
  if (result != 0) shm_errno = code;
  return result;
}

}  // namespace

int setinBandWanGateway(char* text) {
  if (!text) return fail(SHM_EINVAL);
  store(text, kGatewayItem);
  return 0;
}

int setManagementIP(char* text) { return text ? store(text, kManagementItem) : fail(SHM_EINVAL); }
