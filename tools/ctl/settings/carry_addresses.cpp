// SPDX-License-Identifier: Apache-2.0
// The management addresses and the bridge's own IPv6 addresses: the tables do not follow the kernel in Configuration
// Mode, so the kernel is asked here as the library's operations do.
#include <algorithm>
#include <cstring>
#include <span>

#include "kestrove/kestrove.h"
#include "tools/ctl/settings/carrying.h"
#include "tools/ctl/values.h"

namespace ctl {
namespace {

constexpr char kBridge[] = "br0";
enum { kAdd6 = 0, kAdd4 = 1 };

std::span<const ManagementAddress> addressesOf(const ShmData& store) {
  return {store.managementAddress,
          static_cast<size_t>(std::clamp<int32_t>(store.managementAddressCount, 0, SHM_MANAGEMENT_ADDRESSES))};
}

std::span<const Ip6Address> addresses6Of(const ShmData& store) {
  return {store.ip6Address, static_cast<size_t>(std::clamp<int32_t>(store.ip6Count, 0, SHM_IP6_ADDRESSES))};
}

std::string keyOf(const ManagementAddress& entry) {
  return entry.ipVersion == SHM_FAMILY_IPV6 ? address6Text(entry.address6) : addressText(entry.address);
}

template <typename Entry, typename Key>
const Entry* find(std::span<const Entry> entries, const Key& wanted) {
  for (const Entry& entry : entries) {
    if (wanted(entry)) return &entry;
  }
  return nullptr;
}

const ManagementAddress* addressNamed(const ShmData& store, const std::string& key) {
  return find(addressesOf(store), [&key](const ManagementAddress& entry) { return keyOf(entry) == key; });
}

const Ip6Address* address6Named(const ShmData& store, const std::string& key) {
  return find(addresses6Of(store), [&key](const Ip6Address& entry) { return address6Text(entry.address) == key; });
}

bool applied(const ManagementAddress& entry) {
  char name[16] = {};
  if (getInterfaceName(entry.interfaceKind, name, sizeof name) != 0) return false;
  if (entry.ipVersion == SHM_FAMILY_IPV6) return shm_if6config(name, entry.address6, entry.prefixLength6, kAdd6) == 0;
  return shm_netlinkConfig(name, entry.address, entry.mask, 0, kAdd4) == 0 && set_iface_up(name) == 0;
}

// One that its interface no longer has leaves the table all the same.
int removeAddress(const ManagementAddress& stored) {
  ManagementAddress entry = stored;
  if (removeManagementAddr(&entry) == 0) return 0;
  entry.status = SHM_ADDRESS_KEPT;
  return removeManagementAddr(&entry);
}

void remove(Carrying& carrying, const SettingChange& change) {
  const ManagementAddress* stored = addressNamed(*shm, change.key);
  if (!stored) return;
  const ManagementAddress entry = *stored;
  carrying.addressesChanged |= carrying.attempt(change, [&entry] { return removeAddress(entry); });
}

// Where a transition follows it applies every address itself.
void add(Carrying& carrying, const SettingChange& change) {
  const ManagementAddress* wanted = addressNamed(carrying.target, change.key);
  if (!wanted) return;
  ManagementAddress entry = *wanted;
  if (!carrying.attempt(change, [&entry] { return addManagementAddr(&entry); })) return;
  carrying.addressesChanged = true;
  if (!carrying.follows() || changesMode(carrying) || entry.status != SHM_ADDRESS_APPLIED) return;
  if (applied(entry)) return;
  const std::string reason = reasonText();
  entry.status = SHM_ADDRESS_KEPT;
  removeManagementAddr(&entry);
  carrying.failed(change, "its interface refuses it: " + reason);
}

// The library asks the bridge first; one that has lost the address gets it back to lose it.
int removeAddress6(const Ip6Address& entry) {
  if (removeIp6(entry.address) == 0) return 0;
  shm_if6config(kBridge, entry.address, entry.prefixLength, kAdd6);
  return removeIp6(entry.address);
}

void remove6(Carrying& carrying, const SettingChange& change) {
  const Ip6Address* stored = address6Named(*shm, change.key);
  if (!stored) return;
  const Ip6Address entry = *stored;
  carrying.attempt(change, [&entry] { return removeAddress6(entry); });
}

void add6(Carrying& carrying, const SettingChange& change) {
  const Ip6Address* wanted = address6Named(carrying.target, change.key);
  if (!wanted) return;
  carrying.attempt(change, [&] {
    const bool apply = carrying.follows() && !changesMode(carrying);
    if (apply && shm_if6config(kBridge, wanted->address, wanted->prefixLength, kAdd6) < 0) return -1;
    return addIp6(wanted);
  });
}

// Those that go make room; one that changes goes and comes.
template <typename Remove, typename Add>
void replaceAll(const std::vector<const SettingChange*>& changes, const Remove& removeOne, const Add& addOne) {
  for (const SettingChange* change : changes) {
    if (change->before) removeOne({change->section, change->key, change->before, {}});
  }
  for (const SettingChange* change : changes) {
    if (change->after) addOne(*change);
  }
}

}  // namespace

void changeAddresses(Carrying& carrying) {
  replaceAll(
      carrying.changesOf("addresses6"), [&](const SettingChange& change) { remove6(carrying, change); },
      [&](const SettingChange& change) { add6(carrying, change); });
  replaceAll(
      carrying.changesOf("addresses"), [&](const SettingChange& change) { remove(carrying, change); },
      [&](const SettingChange& change) { add(carrying, change); });
}

}  // namespace ctl
