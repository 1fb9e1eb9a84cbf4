#include "store/fresh.h"

#include <stddef.h>

#include "kestrove/segment.h"

namespace kestrove {
namespace {

constexpr uint32_t kFamilyAny = 1;
constexpr uint32_t kFamilyIpv4 = 4;
constexpr uint32_t kIpv6Supported = 1;
constexpr int32_t kTargetAccelerate = 1;
constexpr int32_t kPriority = 8;
constexpr uint32_t kAccelerationOn = 1;
constexpr uint32_t kRuleActive = 3;

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
  FilterRule rule = {};
  rule.ipVersion = shm->config.ipv6Support == kIpv6Supported ? kFamilyAny : kFamilyIpv4;
  rule.target = kTargetAccelerate;
  rule.priority = kPriority;
  rule.bandwidth = static_cast<int32_t>(shm->config.minRate);
  rule.accel = kAccelerationOn;
  rule.ruleAction = kRuleActive;
  shm->filterTable.rule[0] = rule;
  shm->filterTable.ruleCount = 1;
}

}  // namespace kestrove
