// SPDX-License-Identifier: Apache-2.0
// Changes of the rule table, each made so that a death inside it leaves the table from before or the one from after.
// To be used under the store lock, with positions in use that are not the default rule's.
#pragma once

#include <string.h>

#include "store/bounds.h"
#include "store/journal.h"

namespace kestrove {

// The rule that matches everything, with all that the configuration does not decide.
FilterRule defaultRule(uint32_t ipVersion, int32_t bandwidth);

// There must be room. The rules from position on move one place back; the default rule may be among them.
void openRule(ShmData& store, int position, const FilterRule& rule);
void closeRule(ShmData& store, int position);
// The rule comes to stand at place, those between move towards where it was.
void shiftRule(ShmData& store, int from, int place);
void replaceRule(ShmData& store, int position, const FilterRule& rule);

Outcome finishRuleClosing(ShmData& store, const Note& note);
Outcome finishRuleOpening(ShmData& store, const Note& note);
Outcome finishRuleMoving(ShmData& store, const Note& note);
Outcome finishRuleMovingFull(ShmData& store, const Note& note);
Outcome finishDefaultRule(ShmData& store, const Note& note);

// Lays a record of any table into the spare place behind the rules. False when a full rule table leaves none.
template <typename Record>
[[nodiscard]] bool layAside(ShmData& store, const Record& record) {
  static_assert(sizeof(Record) <= sizeof(FilterRule));
  int spare = ruleEntries(store);
  if (spare == SHM_RULES) return false;
  memcpy(&store.filterTable.rule[spare], &record, sizeof record);
  keepOrder();
  return true;
}

// Whether the spare place is the one that a note names as its value.
inline bool spareIsAt(const ShmData& store, uint32_t place) {
  auto rules = static_cast<uint32_t>(ruleEntries(store));
  return place == rules && rules < SHM_RULES;
}

template <typename Record>
void takeSpare(ShmData& store, Record& to) {
  memcpy(&to, &store.filterTable.rule[ruleEntries(store)], sizeof to);
  keepOrder();
}

}  // namespace kestrove
