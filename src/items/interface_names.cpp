// SPDX-License-Identifier: Apache-2.0
// Names and VLAN ids of the interfaces, by interface number.
#include "store/interface_names.h"

#include "kestrove/items.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/segment.h"

namespace kestrove {
namespace {

constexpr int kShortestBuffer = 15;

int copyName(bool (*find)(int, InterfaceName&), int number, char* buffer, int size) {
  if (!buffer || size < kShortestBuffer) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  InterfaceName name;
  if (!find(number, name)) return fail(SHM_EINVAL);
  copyField(buffer, static_cast<size_t>(size), name.text);
  return 0;
}

// For accessors whose caller may hold the lock already and says so.
bool reachable(const StoreLock& lock, int takeLock) { return takeLock ? static_cast<bool>(lock) : attachStore(); }

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int getInterfaceName(int number, char* buffer, int size) { return copyName(interfaceName, number, buffer, size); }

int getPhysicalInterfaceName(int number, char* buffer, int size) {
  return copyName(physicalInterfaceName, number, buffer, size);
}

int setInterfaceName(int number, const char* name, int size) {
  if (!name || size < kShortestBuffer) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  interface_names::Field field = interface_names::currentField(number);
  if (!field) return fail(SHM_EINVAL);
  InterfaceName cut;
  setField(cut.text, name, sizeof cut.text - 1);
  memcpy(shm->config.*field, cut.text, sizeof cut.text);
  return 0;
}

int getBridgeRouterLanWanPhysName(char* base, char* lan, int takeLock) {
  if (!base || !lan) return fail(SHM_EINVAL);
  StoreLock lock(takeLock != 0);
  if (!reachable(lock, takeLock)) return -1;
  InterfaceName baseName, lanName;  // both before either is given out: the buffers may be names of the store
  copyField(baseName.text, sizeof baseName.text, shm->config.bridgeRouterPhysicalName);
  copyField(lanName.text, sizeof lanName.text, shm->config.physicalLanInterfaceName);
  strcpy(base, baseName.text);
  strcpy(lan, lanName.text);
  return 0;
}

int getLanWanVlanId(uint32_t* lan, uint32_t* wan, int takeLock) {
  StoreLock lock(takeLock != 0);
  if (!reachable(lock, takeLock)) return -1;
  uint32_t lanId = shm->config.lanVlanId, wanId = shm->config.wanVlanId;  // the outputs may be these fields
  if (lan) *lan = lanId;
  if (wan) *wan = wanId;
  return 0;
}
