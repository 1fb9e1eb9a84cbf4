// SPDX-License-Identifier: Apache-2.0
// The exported accessors of the numbered items; the rows of the table say what each does.
#include "kestrove/items.h"

#include "items/effects.h"
#include "items/item_table.h"
#include "kestrove/events.h"
#include "store/lock.h"

namespace kestrove {
namespace {

int applyChange(const Item& item, uint32_t value, uint32_t source, const char* user) {
  ChangeSave save;
  if (item.onEvent != 0) logEvent(value == SHM_ON ? item.onEvent : item.offEvent, source, user);
  if (item.save) save.run(save_shared_memory);
  markAndSignalUnlessDebugging(item.pending);
  bool acted = !item.action || item.action(value) == 0;
  int saved = save.result();
  return acted ? saved : -1;
}

int runHook(ConfigHook hook, void* a, void* b) { return hook ? hook(a, b) : 0; }

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int getKestroveConfigItem(int id, uint32_t* out) {
  if (!out) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  const Item* item = findItem(id);
  if (!item) return fail(SHM_EINVAL);
  *out = !item->present || item->present() ? fetchItem(*item) : 0;
  return 0;
}

int setKestroveConfigItem(int id, uint32_t value, uint32_t source, const char* user) {
  StoreLock lock;
  if (!lock) return -1;
  const Item* item = findItem(id);
  if (!item || !item->accepts) return fail(SHM_EINVAL);
  if (!item->accepts(value)) return -1;
  if (fetchItem(*item) == value) return 0;
  storeItem(*item, value);
  return configurationMode() ? 0 : applyChange(*item, value, source, user);
}

int setKestroveConfigItemPreAct(int id, uint32_t value, uint32_t source, const char* user, ConfigHook hook, void* a,
                                void* b) {
  runHook(hook, a, b);
  return setKestroveConfigItem(id, value, source, user);
}

int setKestroveConfigItemPostAct(int id, uint32_t value, uint32_t source, const char* user, ConfigHook hook, void* a,
                                 void* b) {
  return setKestroveConfigItem(id, value, source, user) == 0 ? runHook(hook, a, b) : -1;
}

int setNetworkConfigItemPostAct(int id, const uint32_t* value, uint32_t source, const char* user, ConfigHook hook,
                                void* a, void* b) {
  return setNetworkConfigItem(id, value, source, user) == 0 ? runHook(hook, a, b) : -1;
}
