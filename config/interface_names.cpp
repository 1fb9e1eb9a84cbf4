#include "kestrove/items.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/segment.h"
#include "store/text.h"

namespace kestrove {
namespace {

constexpr int kShortestBuffer = 15;
constexpr size_t kNameWidth = 16;
constexpr char kBridge[] = "br0";

enum Number : unsigned { kLan, kWan, kNone, kManagement, kBridgeNumber, kBridgeRouter, kNumbers };

using NameField = char (ConfigRecord::*)[kNameWidth];

constexpr NameField kPhysicalNames[kNumbers] = {&ConfigRecord::physicalLanInterfaceName,
                                                &ConfigRecord::physicalWanInterfaceName,
                                                nullptr,
                                                &ConfigRecord::managementInterfaceName,
                                                nullptr /* the bridge's name is fixed */,
                                                &ConfigRecord::bridgeRouterPhysicalName};

// Null for a number without a stored name.
NameField physicalField(unsigned number) { return number < kNumbers ? kPhysicalNames[number] : nullptr; }

NameField logicalField(unsigned number) {
  if (number == kLan) return &ConfigRecord::lanInterfaceName;
  if (number == kWan) return &ConfigRecord::wanInterfaceName;
  return physicalField(number);
}

int copyName(NameField (*fieldOf)(unsigned), int number, char* buffer, int size) {
  if (!buffer || size < kShortestBuffer) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  if (number == kBridgeNumber) {
    copyField(buffer, static_cast<size_t>(size), kBridge);
    return 0;
  }
  NameField field = fieldOf(static_cast<unsigned>(number));
  if (!field) return fail(SHM_EINVAL);
  copyField(buffer, static_cast<size_t>(size), shm->config.*field);
  return 0;
}

// For accessors whose caller may hold the lock already and says so.
bool reachable(const StoreLock& lock, int takeLock) { return takeLock ? static_cast<bool>(lock) : attachStore(); }

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int getInterfaceName(int number, char* buffer, int size) { return copyName(logicalField, number, buffer, size); }

int getPhysicalInterfaceName(int number, char* buffer, int size) {
  return copyName(physicalField, number, buffer, size);
}

int setInterfaceName(int number, const char* name, int size) {
  if (!name || size < kShortestBuffer) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  NameField field = logicalField(static_cast<unsigned>(number));
  if (!field) return fail(SHM_EINVAL);
  setField(shm->config.*field, name, kNameWidth - 1);
  (shm->config.*field)[kNameWidth - 1] = '\0';
  return 0;
}

int getBridgeRouterLanWanPhysName(char* base, char* lan, int takeLock) {
  if (!base || !lan) return fail(SHM_EINVAL);
  StoreLock lock(takeLock != 0);
  if (!reachable(lock, takeLock)) return -1;
  copyField(base, kNameWidth, shm->config.bridgeRouterPhysicalName);
  copyField(lan, kNameWidth, shm->config.physicalLanInterfaceName);
  return 0;
}

int getLanWanVlanId(uint32_t* lan, uint32_t* wan, int takeLock) {
  StoreLock lock(takeLock != 0);
  if (!reachable(lock, takeLock)) return -1;
  if (lan) *lan = shm->config.lanVlanId;
  if (wan) *wan = shm->config.wanVlanId;
  return 0;
}
