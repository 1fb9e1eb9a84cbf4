// SPDX-License-Identifier: Apache-2.0
// The small named accessors: states, notifications, identity of the caller.
#include "kestrove/codes.h"
#include "kestrove/items.h"
#include "kestrove/persistence.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/segment.h"
#include "store/text.h"

namespace kestrove {
namespace {

constexpr unsigned kNotifications = 3;

// The bit of notification n, counted from 1; 0 when there is none.
uint8_t notificationBit(int n) {
  unsigned index = static_cast<unsigned>(n) - 1;
  return index < kNotifications ? static_cast<uint8_t>(1u << index) : uint8_t{0};
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int getShmOperationalState(void) {
  StoreLock lock;
  return lock ? static_cast<int>(shm->operationalState) : -1;
}

int setShmOperationalState(uint32_t state) {
  StoreLock lock;
  if (!lock) return -1;
  if (state > SHM_STATE_DEBUG) return fail(SHM_EINVAL);
  shm->operationalState = state;
  return 0;
}

int getCliOperationalState(void) {
  StoreLock lock;
  return lock ? shm->config.cliOperState : -1;
}

int getShmFileBuffering(void) { return attachStore() ? static_cast<int>(shm->config.fileBuffering) : -1; }

// Reading consumes the notification.
int getNotificationStatus(int n) {
  StoreLock lock;
  if (!lock) return -1;
  uint8_t bit = notificationBit(n);
  if (bit == 0) return fail(SHM_EINVAL);
  bool set = shm->notificationStatus & bit;
  shm->notificationStatus = static_cast<uint8_t>(shm->notificationStatus & ~bit);
  return set;
}

int setNotificationStatus(int n) {
  StoreLock lock;
  if (!lock) return -1;
  uint8_t bit = notificationBit(n);
  if (bit == 0) return fail(SHM_EINVAL);
  shm->notificationStatus |= bit;
  return 0;
}

int getShmSourceComponent(void) {
  StoreLock lock;
  return lock ? static_cast<int>(shm->sourceComponent) : -1;
}

int setShmSourceComponent(uint32_t component) {
  StoreLock lock;
  if (!lock) return -1;
  if (component > SHM_SOURCE_UNKNOWN) return fail(SHM_EINVAL);
  shm->sourceComponent = component;
  return 0;
}

int setEventSourceUsername(const char* name) {
  if (!name) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  char(&field)[sizeof shm->eventSourceUsername] = shm->eventSourceUsername;
  char cut[sizeof field] = {};
  setField(cut, name, sizeof cut - 1);
  if (memcmp(field, cut, sizeof field) == 0) return 0;  // the whole field: what a longer name left is cleared, too
  memcpy(field, cut, sizeof field);
  save_shared_memory();  // its failure leaves a code; the name is set all the same
  return 0;
}

int getEventSourceUsername(char* buffer) {
  if (!buffer) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  copyField(buffer, sizeof shm->eventSourceUsername, shm->eventSourceUsername);
  return 0;
}
