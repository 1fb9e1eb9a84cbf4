// SPDX-License-Identifier: Apache-2.0
// The management addresses: the table, its saves, and the interfaces behind it.
#include <arpa/inet.h>
#include <string.h>
#include <syslog.h>

#include "kestrove/codes.h"
#include "kestrove/iface.h"
#include "kestrove/ipv6.h"
#include "kestrove/items.h"
#include "kestrove/management.h"
#include "kestrove/persistence.h"
#include "kestrove/routes.h"
#include "kestrove/text.h"
#include "net/address/address_status.h"
#include "store/address_slots.h"
#include "store/bounds.h"
#include "store/change_save.h"
#include "store/fail.h"
#include "store/interface_names.h"
#include "store/lock.h"
#include "store/mode.h"

ManagementAddress manAddrEnt = {};

namespace kestrove {
namespace {

constexpr int kSmallestList = 16;  // one IPv4 address

int positionOf6(const uint8_t* address) {
  for (int i = 0; i < managementEntries(*shm); ++i) {
    if (v6Match(shm->managementAddress[i].address6, address)) return i;
  }
  return -1;
}

// The entry that an address collides with or means: the same IPv6 address in an entry of any family, or the first
// IPv4 entry whose subnet holds the address. An unknown family sets its code and has none.
int positionOf(const ManagementAddress& entry) {
  if (entry.ipVersion == SHM_FAMILY_IPV6) return positionOf6(entry.address6);
  if (entry.ipVersion == SHM_FAMILY_IPV4) return v4AddressIsLocal(entry.address);
  return fail(SHM_EINVAL);
}

bool full() { return static_cast<uint32_t>(shm->managementAddressCount) >= SHM_MANAGEMENT_ADDRESSES; }

// Saves, then lets the routes follow the addresses.
void saveAndFreshen() {
  ChangeSave save;
  save.run(save_shared_memory);
  freshenRouteTable(0, "--");
  save.leaveCode();
}

struct ParsedAddress {
  bool parse(const char* text) {
    isIpv6 = inet_pton(AF_INET6, text, bytes) == 1;
    return isIpv6 || inet_pton(AF_INET, text, bytes) == 1;
  }
  bool matches(const ManagementAddress& entry) const {
    if (isIpv6 != (entry.ipVersion == SHM_FAMILY_IPV6)) return false;
    return isIpv6 ? v6Match(entry.address6, bytes) == 1 : memcmp(&entry.address, bytes, sizeof entry.address) == 0;
  }
  bool isIpv6 = false;
  uint8_t bytes[16] = {};
};

bool textOf(const ManagementAddress& entry, char* text, int size) {
  if (entry.ipVersion == SHM_FAMILY_IPV6) return ipv6_to_a(entry.address6, text, size) == 0;
  return inet_ntop(AF_INET, &entry.address, text, static_cast<socklen_t>(size)) != nullptr;
}

// False when the list has no room for the text.
bool appendAddress(char* list, size_t size, const char* text) {
  size_t used = strlen(list);
  size_t length = strlen(text);
  if (used + length >= size - 1) return false;
  list[used] = ' ';
  memcpy(list + used + 1, text, length + 1);
  return true;
}

// The mirror of applying it: off the interface that the record names.
bool takeOff(const ManagementAddress& entry) {
  enum { kDelete6 = 1, kDelete4 = -1 };
  InterfaceName name;
  if (!interfaceName(entry.interfaceKind, name)) return false;
  if (entry.ipVersion == SHM_FAMILY_IPV6)
    return shm_if6config(name.text, entry.address6, entry.prefixLength6, kDelete6) == 0;
  return shm_netlinkConfig(name.text, entry.address, entry.mask, 0, kDelete4) == 0;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int addManagementAddr(ManagementAddress* entry) {
  if (!entry) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) {
    syslog(LOG_DEBUG, "shm_lock failed");
    return -1;
  }
  if (full()) return fail(SHM_EFULL);
  // A family that is neither 4 nor 6 sets its code here and is added all the same: kept on purpose.
  if (positionOf(*entry) >= 0) return fail(SHM_EEXIST);
  entry->status = addressStatus(shm->config.opModeState, entry->interfaceKind);
  if (!configurationMode() && entry->status == SHM_ADDRESS_APPLIED && !applyAddress(*entry)) {
    entry->status = SHM_ADDRESS_KEPT;
    return fail(SHM_ESYSTEM);
  }
  appendAddress(*shm, *entry);
  if (!configurationMode()) saveAndFreshen();
  return 0;
}

int removeManagementAddr(ManagementAddress* entry) {
  if (!entry) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  int index = positionOf(*entry);
  if (index < 0) return -1;
  // The search is the one that adding refuses by, and leaves its code: kept on purpose.
  if (entry->ipVersion == SHM_FAMILY_IPV6) shm_errno = SHM_EEXIST;
  if (entry->status == SHM_ADDRESS_APPLIED && !takeOff(*entry)) return fail(SHM_ESYSTEM);
  dropAddress(*shm, index);
  if (!configurationMode()) saveAndFreshen();
  return 0;
}

int findManagementAddr(const char* text, ManagementAddress* out) {
  if (!text || !out) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  ParsedAddress address;
  if (!address.parse(text)) return fail(SHM_EINVAL);
  int count = managementEntries(*shm);
  for (int i = 0; i < count; ++i) {
    if (!address.matches(shm->managementAddress[i])) continue;
    memmove(out, &shm->managementAddress[i], sizeof *out);  // a caller may have it put into the table
    return 0;
  }
  return count == 0 ? 0 : -1;  // an empty list counts as a success without an entry: kept on purpose
}

int getManagementAddr(int index, ManagementAddress* out) {
  if (!out) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  if (index < 0 || index >= managementEntries(*shm)) return fail(SHM_EINVAL);
  memmove(out, &shm->managementAddress[index], sizeof *out);
  return 0;
}

int getManagementAddrCount(void) {
  StoreLock lock;
  return lock ? shm->managementAddressCount : -1;
}

int getManagementAddressList(char* buffer, int size) {
  if (!buffer) return fail(SHM_EINVAL);
  if (size < kSmallestList) {
    syslog(LOG_ERR, "getManagementAddressList: Buffer size too small");
    return -1;
  }
  buffer[0] = '\0';  // callers use the list whatever the result
  StoreLock lock;
  if (!lock) return -1;
  int count = managementEntries(*shm);
  ManagementAddress entry;
  for (int i = 0; i < count && getManagementAddr(i, &entry) == 0; ++i) {
    char text[INET6_ADDRSTRLEN];
    if (entry.status != SHM_ADDRESS_APPLIED || !textOf(entry, text, sizeof text)) continue;
    if (!appendAddress(buffer, static_cast<size_t>(size), text)) break;
  }
  return 0;
}

int validateInterfaceStatus(int interfaceKind) {
  uint32_t mode = 0;
  if (getKestroveConfigItem(SHM_ITEM_OPERATING_MODE, &mode) != 0) return -1;
  return static_cast<int>(addressStatus(mode, interfaceKind));
}
