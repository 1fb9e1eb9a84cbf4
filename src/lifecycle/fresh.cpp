// SPDX-License-Identifier: Apache-2.0
#include "lifecycle/fresh.h"

#include <stddef.h>

#include "kestrove/codes.h"
#include "kestrove/segment.h"
#include "store/rule_slots.h"

namespace kestrove {
namespace {

template <typename Entry, size_t N>
void freeSlots(Entry (&slots)[N]) {
  for (Entry& slot : slots) slot.inUse = slot.next = SHM_NO_SLOT;
}

}  // namespace

// The heads stay 0: a head slot that is not in use is an empty list.
void layOutRouteTables() {
  freeSlots(shm->routes.slot);
  freeSlots(shm->routes6.slot);
}

void resetRuleTable() {
  uint32_t family = shm->config.ipv6Support == SHM_ON ? SHM_FAMILY_ANY : SHM_FAMILY_IPV4;
  shm->filterTable.rule[0] = defaultRule(family, static_cast<int32_t>(shm->config.minRate));
  shm->filterTable.ruleCount = 1;
}

}  // namespace kestrove
