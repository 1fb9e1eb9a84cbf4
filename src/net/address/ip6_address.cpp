// SPDX-License-Identifier: Apache-2.0
// The bridge's own IPv6 addresses: the table, its saves, and the kernel behind it.
#include <arpa/inet.h>
#include <string.h>

#include "kestrove/iface.h"
#include "kestrove/ipv6.h"
#include "kestrove/persistence.h"
#include "store/address_slots.h"
#include "store/bounds.h"
#include "store/fail.h"
#include "store/interface_names.h"
#include "store/lock.h"
#include "store/mode.h"
#include "store/segment.h"

namespace kestrove {
namespace {

enum InterfaceAction { kAdd = 0, kDelete = 1 };

// A damaged count is no room.
bool full() { return static_cast<uint32_t>(shm->ip6Count) >= SHM_IP6_ADDRESSES; }
bool inRange(int index) { return index >= 0 && index < ip6Entries(*shm); }

int positionOf(const void* address) {
  for (int i = 0; i < ip6Entries(*shm); ++i) {
    if (v6Match(shm->ip6Address[i].address, address)) return i;
  }
  return -1;
}

bool onBridge(const Ip6Address& entry, InterfaceAction action) {
  return shm_if6config(kBridge, entry.address, entry.prefixLength, action) >= 0;
}

void saveOutsideConfigurationMode() {
  if (!configurationMode()) save_shared_memory();
}

// Moves an entry to a new value, on the bridge too and in Configuration Mode too: kept on purpose. A bridge that
// refuses the removal leaves the entry, one that refuses the new value leaves that stored, unsaved.
int edit(int index, const Ip6Address& value) {
  const Ip6Address& entry = shm->ip6Address[index];
  if (!onBridge(entry, kDelete)) return -1;
  changeAddress6(*shm, index, value);
  if (!onBridge(entry, kAdd)) return -1;
  saveOutsideConfigurationMode();
  return 0;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int shm_addIp6(const Ip6Address* entry) {
  if (!entry) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  if (full()) return fail(SHM_EFULL);
  if (positionOf(entry->address) >= 0) return fail(SHM_EEXIST);
  if (!configurationMode() && !onBridge(*entry, kAdd)) return -1;
  appendAddress6(*shm, *entry);
  saveOutsideConfigurationMode();
  return 0;
}

int addIp6(const Ip6Address* entry) { return shm_addIp6(entry) < 0 ? -1 : 0; }

int shm_editIp6Address(int index, const void* address16) {
  if (!address16) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  if (!inRange(index)) return fail(SHM_EINVAL);
  int position = positionOf(address16);
  if (position == index) return 0;
  if (position >= 0) return fail(SHM_EEXIST);
  Ip6Address value = shm->ip6Address[index];
  memcpy(value.address, address16, sizeof value.address);
  return edit(index, value);
}

int shm_editIp6Prefix(int index, uint32_t prefixLength) {
  StoreLock lock;
  if (!lock) return -1;
  if (!inRange(index)) return fail(SHM_EINVAL);
  Ip6Address value = shm->ip6Address[index];
  value.prefixLength = prefixLength;
  return edit(index, value);
}

int removeIp6(const void* address16) {
  if (!address16) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  int index = positionOf(address16);
  // No code for an unknown address, and the bridge is asked in Configuration Mode too: both kept on purpose.
  if (index < 0 || !onBridge(shm->ip6Address[index], kDelete)) return -1;
  dropAddress6(*shm, index);
  saveOutsideConfigurationMode();
  return 0;
}

int checkIp6(const void* address16) {
  if (!address16) return fail(SHM_EINVAL);
  return attachStore() ? positionOf(address16) : -1;
}

int getIp6TableEntry(int index, Ip6Address* out) {
  if (!out) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  if (!inRange(index)) return fail(SHM_EINVAL);
  *out = shm->ip6Address[index];
  return 0;
}

int getIp6TableEntryByAddr(const char* text, Ip6Address* out) {
  if (!text || !out) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  uint8_t address[16];
  if (inet_pton(AF_INET6, text, address) != 1) return -1;
  for (int i = ip6Entries(*shm) - 1; i >= 0; --i) {  // of equal entries the last one counts
    if (!v6Match(shm->ip6Address[i].address, address)) continue;
    *out = shm->ip6Address[i];
    return 0;
  }
  return -1;
}

int getIp6Count(void) {
  StoreLock lock;
  return lock ? shm->ip6Count : -1;
}
