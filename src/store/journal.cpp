// SPDX-License-Identifier: Apache-2.0
#include "store/journal.h"

#include <string.h>
#include <syslog.h>

#include "kestrove/segment.h"
#include "store/accounts.h"
#include "store/address_slots.h"
#include "store/event_slots.h"
#include "store/route_slots.h"
#include "store/rule_slots.h"

namespace kestrove {
namespace {

struct Kind {
  const char* table;
  Outcome (*finish)(ShmData& store, const Note& note);
};

// In the order of Work.
constexpr Kind kKinds[] = {
    {"", nullptr},
    {"rule table", finishRuleClosing},
    {"rule table", finishRuleOpening},
    {"rule table", finishRuleMoving},
    {"rule table", finishRuleMovingFull},
    {"rule table", finishRuleMovingFull},
    {"rule table", finishDefaultRule},
    {"rule table", finishDefaultRule},
    {"user table", finishUserClosing},
    {"user table", finishUserAdding},
    {"management address list", finishAddressClosing},
    {"IPv6 address table", finishAddress6Closing},
    {"IPv6 address table", finishAddress6Changing},
    {"event log", finishEventChanging},
    {"event log", finishEventCounting},
    {"event log", finishEventEmptying},
    {"IPv4 route table", finishRouteLinking},
    {"IPv4 route table", finishRouteUnlinking},
    {"IPv4 route table", finishRouteSwapping},
    {"IPv6 route table", finishRoute6Linking},
    {"IPv6 route table", finishRoute6Unlinking},
    {"IPv6 route table", finishRoute6Swapping},
};
constexpr uint32_t kKindCount = sizeof kKinds / sizeof kKinds[0];
static_assert(kKindCount == static_cast<uint32_t>(Work::kRoute6Swapping) + 1, "one row for each work");

uint32_t numberOf(const Note& note) { return static_cast<uint32_t>(note.work); }

bool quiet(const ShmData& store) {
  uint64_t words;
  memcpy(&words, store.reserved32, sizeof words);
  return words == 0;
}

}  // namespace

void carryOut(ShmData& store, const Note& note) {
  Journal(store).begin(note);
  static_cast<void>(kKinds[numberOf(note)].finish(store, note));  // our own note: it makes sense
}

Outcome finishWork(ShmData& store) {
  Note note = Journal(store).read();
  bool known = numberOf(note) > 0 && numberOf(note) < kKindCount;
  Outcome outcome = known ? kKinds[numberOf(note)].finish(store, note) : Outcome::kNonsense;
  if (outcome != Outcome::kNonsense) return outcome;
  // A process that died before its first word or behind its last leaves the second one alone.
  bool begun = numberOf(note) != 0 || note.hole != 0 || note.small != 0;
  Journal(store).end();
  return begun ? Outcome::kNonsense : Outcome::kNothing;
}

void finishAbandonedWork() {
  if (quiet(*shm)) return;
  Note note = Journal(*shm).read();
  Outcome outcome = finishWork(*shm);
  if (outcome == Outcome::kNothing) return;
  if (outcome == Outcome::kNonsense) {
    syslog(LOG_WARNING, "The store named a change that cannot be (%u, %u, %u, %u): cleared", numberOf(note), note.hole,
           note.small, note.value);
    return;
  }
  syslog(LOG_WARNING, "A process died while it changed the %s: the change is %s", kKinds[numberOf(note)].table,
         outcome == Outcome::kFinished ? "finished" : "taken back");
}

}  // namespace kestrove
