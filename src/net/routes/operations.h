// SPDX-License-Identifier: Apache-2.0
// The operations that the IPv4 and the IPv6 route table share.
//
// A family names what differs:
//   Record                   the route; its inUse and next belong to the table
//   its order                as sorted_list.h wants it
//   Given                    a caller's route: const where the operations leave it alone
//   list()                   the table as a sorted list
//   unlink(key)              take the route with that key off the list
//   replace(key, route)      put another one there instead
//   acceptable(route)        may it be in the table
//   install(route)           bring it into the kernel; false when its gateway is not local or the kernel refuses
//   uninstall(route)         take it out of the kernel; negative when the kernel refuses
#pragma once

#include <stddef.h>
#include <string.h>

#include "kestrove/codes.h"
#include "kestrove/persistence.h"
#include "store/change_save.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/mode.h"

namespace kestrove {

// The saves of one operation, put together at its end.
class DeferredSave {
 public:
  void mark() { due_ = true; }
  void now() {
    if (due_) save_.run(save_shared_memory);
    due_ = false;
  }
  // As ChangeSave has it.
  void leaveCode() const { save_.leaveCode(); }

 private:
  bool due_ = false;
  ChangeSave save_;
};

// What callers get of a route: all but the words that thread the table.
template <typename Record>
int giveRoute(Record* out, const Record* slot) {
  if (!slot) return fail(SHM_ENOENT);
  memcpy(out, slot, offsetof(Record, inUse));
  return 0;
}

inline bool kernelFollows() { return !configurationMode() && !debugMode(); }

// Brings a route that the table took into the kernel, where mode and status say so. One that cannot be installed stays
// as inactive. Nothing is saved. False when the table did not take it.
template <typename Family>
bool settleRoute(typename Family::Record* stored, typename Family::Given& route) {
  if (!stored) return false;
  if (kernelFollows() && stored->status == SHM_ROUTE_ACTIVE && !Family::install(route))
    stored->status = SHM_ROUTE_INACTIVE;
  return true;
}

template <typename Family>
bool leavesKernel(const typename Family::Record& route) {
  return debugMode() || route.status != SHM_ROUTE_ACTIVE || Family::uninstall(route) >= 0;
}

template <typename Family>
int addRoute(typename Family::Given* route) {
  if (!route) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  if (!Family::acceptable(*route)) return fail(SHM_EMASK);
  if (!settleRoute<Family>(Family::list().insert(*route), *route)) return -1;
  if (!configurationMode()) save_shared_memory();
  return 0;
}

template <typename Family>
int deleteRoute(const typename Family::Record& key) {
  StoreLock lock;
  if (!lock || configurationMode()) return -1;
  typename Family::Record* route = Family::list().find(key);
  if (!route) return fail(SHM_ENOENT);
  if (!leavesKernel<Family>(*route)) {
    route->status = SHM_ROUTE_INACTIVE;
    return -1;
  }
  Family::unlink(key);
  save_shared_memory();
  return 0;
}

// Replaces under the lock; what is to be saved is marked. A refusal of the kernel marks the old route as inactive
// without a save, so what was to be saved before goes to the file first.
template <typename Family>
int replaceMarked(const typename Family::Record& key, typename Family::Given& route, DeferredSave& save) {
  if (!Family::acceptable(route)) return fail(SHM_EMASK);
  if (configurationMode()) return -1;
  typename Family::Record* old = Family::list().find(key);
  if (!old) return fail(SHM_ENOENT);
  if (!leavesKernel<Family>(*old)) {
    save.now();
    old->status = SHM_ROUTE_INACTIVE;
    return fail(SHM_ESYSTEM);
  }
  save.mark();
  return settleRoute<Family>(Family::replace(key, route), route) ? 0 : -1;
}

// When the new route cannot be added, the old one is gone all the same: kept on purpose.
template <typename Family>
int replaceRoute(const typename Family::Record& key, typename Family::Given* route) {
  if (!route) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  DeferredSave save;
  int result = replaceMarked<Family>(key, *route, save);
  uint32_t code = shm_errno;
  save.now();
  if (result != 0) shm_errno = code;
  return result;
}

template <typename Family>
int getFirstRoute(typename Family::Record* out) {
  if (!out) return fail(SHM_EINVAL);
  StoreLock lock;
  return lock ? giveRoute(out, Family::list().first()) : -1;
}

template <typename Family>
int getRoute(const typename Family::Record& key, typename Family::Record* out) {
  if (!out) return fail(SHM_EINVAL);
  StoreLock lock;
  return lock ? giveRoute(out, Family::list().find(key)) : -1;
}

template <typename Family>
int getNextRoute(const typename Family::Record& key, typename Family::Record* out) {
  if (!out) return fail(SHM_EINVAL);
  StoreLock lock;
  return lock ? giveRoute(out, Family::list().next(key)) : -1;
}

// Brings every route but the disabled ones into the kernel anew. Under the lock.
template <typename Family>
void installRoutes() {
  typename Family::Record* stored = Family::list().first();
  for (uint32_t step = 0; stored && step < Family::kSlots; ++step) {
    if (stored->status != SHM_ROUTE_DISABLED) {
      Family::uninstall(*stored);
      typename Family::Record route = *stored;  // what is found for the request does not belong into the table
      stored->status = Family::install(route) ? SHM_ROUTE_ACTIVE : SHM_ROUTE_INACTIVE;
    }
    stored = Family::list().next(*stored);
  }
}

// The code of a walk that came to its end, which does not fail.
inline int endOfWalk() {
  shm_errno = SHM_ENOENT;
  return 0;
}

// Replaces every route, disabled ones included, by itself as active. Always 0, without the lock too.
template <typename Family>
int freshenRoutes() {
  StoreLock lock;
  if (!lock) return 0;
  DeferredSave save;
  const typename Family::Record* slot = Family::list().first();
  for (uint32_t step = 0; slot && step < Family::kSlots; ++step) {
    typename Family::Record route = *slot;
    route.status = SHM_ROUTE_ACTIVE;
    replaceMarked<Family>(route, route, save);
    slot = Family::list().next(route);
  }
  save.now();
  endOfWalk();
  save.leaveCode();
  return 0;
}

}  // namespace kestrove
