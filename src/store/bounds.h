// SPDX-License-Identifier: Apache-2.0
// Counts of the store's tables as loops may use them: a damaged one is no licence to leave the table.
#pragma once

#include "kestrove/layout.h"

namespace kestrove {

constexpr int boundedCount(int count, int capacity) { return count < 0 ? 0 : (count < capacity ? count : capacity); }

inline int managementEntries(const ShmData& store) {
  return boundedCount(store.managementAddressCount, SHM_MANAGEMENT_ADDRESSES);
}

inline int ruleEntries(const ShmData& store) { return boundedCount(store.filterTable.ruleCount, SHM_RULES); }

inline int userEntries(const ShmData& store) { return boundedCount(store.config.userCount, SHM_USERS); }

inline int ip6Entries(const ShmData& store) { return boundedCount(store.ip6Count, SHM_IP6_ADDRESSES); }

}  // namespace kestrove
