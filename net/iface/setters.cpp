// Two addresses that front ends give as text.
#include "kestrove/engine.h"
#include "kestrove/iface.h"
#include "kestrove/items.h"
#include "kestrove/persistence.h"
#include "kestrove/text.h"
#include "store/fail.h"
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
  save_shared_memory();
  markPending(kPendingInterface);
  notifyKestrove();
}

// Saves and tells the engine whether or not the text is an address: kept on purpose. False when it is none.
bool store(char* text, int item) {
  uint32_t address = 0;
  bool parsed = parseIpv4Address(text, &address) == 0;
  if (parsed) setNetworkConfigItem(item, &address, kNoSource, kNoUser);
  if (!configurationMode()) tellEngine();
  return parsed;
}

}  // namespace

int setinBandWanGateway(char* text) {
  if (!text) return fail(SHM_EINVAL);
  if (!attachStore()) return -1;
  store(text, kGatewayItem);
  return 0;
}

int setManagementIP(char* text) {
  if (!text) return fail(SHM_EINVAL);
  if (!attachStore()) return -1;
  return store(text, kManagementItem) ? 0 : -1;
}
