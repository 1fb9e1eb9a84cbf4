// SPDX-License-Identifier: Apache-2.0
#include "store/rule_slots.h"
#include "kestrove/codes.h"

#include "store/hole.h"

namespace kestrove {
namespace {

constexpr uint32_t kLast = SHM_RULES - 1;
constexpr int32_t kPriority = 8;

// What the note of a default rule that is made anew says of the move that needed its slot.
enum : uint32_t { kBefore = 0, kBehind = 1 };

using RuleHole = Hole<FilterRule>;

FilterRule* rules(ShmData& store) { return store.filterTable.rule; }
uint32_t unsignedOf(int number) { return static_cast<uint32_t>(number); }
bool full(const ShmData& store) { return ruleEntries(store) == SHM_RULES; }

bool forIpv4(const Note& note) { return note.work == Work::kRuleMovingFull4 || note.work == Work::kDefaultRule4; }
Work defaultRuleOf(bool ipv4) { return ipv4 ? Work::kDefaultRule4 : Work::kDefaultRule; }

FilterRule remade(const ShmData& store, bool ipv4) {
  return defaultRule(ipv4 ? SHM_FAMILY_IPV4 : SHM_FAMILY_ANY, static_cast<int32_t>(store.config.minRate));
}

// The last rule as the store's birth makes it, for the one family or the other.
bool canBeRemade(const ShmData& store, const FilterRule& last) {
  FilterRule made = remade(store, last.ipVersion == SHM_FAMILY_IPV4);
  return memcmp(&made, &last, sizeof last) == 0;
}

// A full table whose last rule is somebody else's work has no record to spare: a death inside this may tear a rule.
void moveUnnoted(ShmData& store, uint32_t from, uint32_t place, const FilterRule& moved) {
  FilterRule* rule = rules(store);
  if (from > place) memmove(rule + place + 1, rule + place, (from - place) * sizeof *rule);
  if (from < place) memmove(rule + from, rule + from + 1, (place - from) * sizeof *rule);
  rule[place] = moved;
}

void moveInFullTable(ShmData& store, uint32_t from, uint32_t place, const FilterRule& moved) {
  FilterRule& last = rules(store)[kLast];
  if (!canBeRemade(store, last)) return moveUnnoted(store, from, place, moved);
  bool ipv4 = last.ipVersion == SHM_FAMILY_IPV4;
  uint32_t value = twoNumbers(SHM_RULES, place);
  Journal(store).begin({defaultRuleOf(ipv4), 0, kBefore, value});
  last = moved;
  keepOrder();
  carryOut(store, {ipv4 ? Work::kRuleMovingFull4 : Work::kRuleMovingFull, RuleHole::wordOf(from), 0, value});
}

bool movable(const Note& note, uint32_t count) {
  return note.hole <= RuleHole::wordOf(count - 2) && upperOf(note.value) <= count - 2;
}

// The hole of the rule that leaves its place, or whose record is exchanged, goes to where that one is to stand.
void move(ShmData& store, uint32_t from, uint32_t place, const FilterRule& moved) {
  FilterRule record = moved;  // may be one of the table
  if (!layAside(store, record)) return moveInFullTable(store, from, place, record);
  uint32_t count = unsignedOf(ruleEntries(store));
  carryOut(store, {Work::kRuleMoving, RuleHole::wordOf(from), 0, twoNumbers(count, place)});
}

}  // namespace

FilterRule defaultRule(uint32_t ipVersion, int32_t bandwidth) {
  FilterRule rule = {};
  rule.ipVersion = ipVersion;
  rule.target = SHM_TARGET_ACCELERATE;
  rule.priority = kPriority;
  rule.bandwidth = bandwidth;
  rule.accel = SHM_ON;
  rule.ruleAction = SHM_RULE_ACTIVE;
  return rule;
}

void openRule(ShmData& store, int position, const FilterRule& rule) {
  uint32_t count = unsignedOf(ruleEntries(store));
  Note note = {Work::kRuleOpening, RuleHole::wordOf(count), 0, count};
  Journal(store).begin(note);
  RuleHole(store, note, rules(store)).moveTo(unsignedOf(position));
  rules(store)[position] = rule;
  keepOrder();
  store.filterTable.ruleCount = static_cast<int32_t>(count) + 1;
  Journal(store).end();
}

void closeRule(ShmData& store, int position) {
  carryOut(store, {Work::kRuleClosing, RuleHole::wordOf(unsignedOf(position)), 0, unsignedOf(ruleEntries(store))});
}

void shiftRule(ShmData& store, int from, int place) {
  move(store, unsignedOf(from), unsignedOf(place), rules(store)[from]);
}

void replaceRule(ShmData& store, int position, const FilterRule& rule) {
  move(store, unsignedOf(position), unsignedOf(position), rule);
}

// A table keeps its default rule.
Outcome finishRuleClosing(ShmData& store, const Note& note) {
  if (note.value < 2) return Outcome::kNonsense;
  return closeHole(store, note, rules(store), store.filterTable.ruleCount, SHM_RULES);
}

// Without the new rule, which died with the process: the hole goes back to where it came from.
Outcome finishRuleOpening(ShmData& store, const Note& note) {
  if (note.value >= SHM_RULES || note.hole > RuleHole::wordOf(note.value)) return Outcome::kNonsense;
  if (!countedAs(store.filterTable.ruleCount, SHM_RULES, note.value, note.value + 1)) return Outcome::kNonsense;
  bool counted = unsignedOf(ruleEntries(store)) == note.value + 1;
  if (!counted) RuleHole(store, note, rules(store)).moveTo(note.value);
  Journal(store).end();
  return counted ? Outcome::kFinished : Outcome::kTakenBack;
}

// Both places stand before the default rule.
Outcome finishRuleMoving(ShmData& store, const Note& note) {
  uint32_t count = lowerOf(note.value), place = upperOf(note.value);
  if (count < 2 || !spareIsAt(store, count) || !movable(note, count)) return Outcome::kNonsense;
  RuleHole(store, note, rules(store)).moveTo(place);
  takeSpare(store, rules(store)[place]);
  Journal(store).end();
  return Outcome::kFinished;
}

Outcome finishRuleMovingFull(ShmData& store, const Note& note) {
  if (!full(store) || !movable(note, SHM_RULES)) return Outcome::kNonsense;
  uint32_t place = upperOf(note.value);
  FilterRule* rule = rules(store);
  RuleHole(store, note, rule).moveTo(place);
  rule[place] = rule[kLast];
  Note next = {defaultRuleOf(forIpv4(note)), 0, kBehind, note.value};
  Journal(store).progress(next);
  return finishDefaultRule(store, next);
}

Outcome finishDefaultRule(ShmData& store, const Note& note) {
  if (!full(store) || note.small > kBehind || note.hole != 0) return Outcome::kNonsense;
  rules(store)[kLast] = remade(store, forIpv4(note));
  Journal(store).end();
  return note.small == kBehind ? Outcome::kFinished : Outcome::kTakenBack;
}

}  // namespace kestrove
