// SPDX-License-Identifier: Apache-2.0
#include "store/event_slots.h"

#include "store/bounds.h"
#include "store/rule_slots.h"

namespace kestrove {
namespace {

bool follows(uint32_t index, uint32_t slot) {
  return eventSlot(index) == slot || eventSlot(index) == eventSlot(slot + 1);
}

bool plausible(const EventLog& log, const Note& note) {
  return follows(log.readIndex, upperOf(note.value)) && follows(log.writeIndex, note.hole);
}

// Where the ring stood is the note's; doing this again changes nothing.
Outcome advance(ShmData& store, const Note& note, bool full) {
  EventLog& log = store.eventLog;
  if (full) log.readIndex = eventSlot(upperOf(note.value) + 1);
  log.writeIndex = eventSlot(note.hole + 1);
  if (log.writeIndex == eventSlot(log.readIndex)) log.eventLogFull = 1;
  Journal(store).end();
  return Outcome::kFinished;
}

Note placeOf(const EventLog& log, Work work, uint32_t small, uint32_t rules) {
  return {work, eventSlot(log.writeIndex), small, twoNumbers(rules, eventSlot(log.readIndex))};
}

// The oldest event stays whole until the new one can take its place whole. Beside a full rule table there is no record
// to spare: a death inside the copy may leave the oldest event torn.
void replaceOldest(ShmData& store, const EventRecord& record) {
  EventLog& log = store.eventLog;
  if (layAside(store, record)) {
    return carryOut(store, placeOf(log, Work::kEventChanging, 0, static_cast<uint32_t>(ruleEntries(store))));
  }
  log.record[eventSlot(log.writeIndex)] = record;
  carryOut(store, placeOf(log, Work::kEventCounting, 1, 0));
}

}  // namespace

// A slot behind the last event is out of reach until the index says otherwise, and a single store says so but for the
// one that fills the ring.
void appendEventRecord(ShmData& store, const EventRecord& record) {
  EventLog& log = store.eventLog;
  if (log.eventLogFull) return replaceOldest(store, record);
  uint32_t slot = eventSlot(log.writeIndex);
  log.record[slot] = record;
  keepOrder();
  if (eventSlot(slot + 1) == eventSlot(log.readIndex)) return carryOut(store, placeOf(log, Work::kEventCounting, 0, 0));
  log.writeIndex = eventSlot(slot + 1);
}

void emptyEventRing(ShmData& store) { carryOut(store, {Work::kEventEmptying, 0, 0, 0}); }

Outcome finishEventChanging(ShmData& store, const Note& note) {
  if (!spareIsAt(store, lowerOf(note.value)) || !plausible(store.eventLog, note)) return Outcome::kNonsense;
  if (store.eventLog.eventLogFull == 0) return Outcome::kNonsense;
  takeSpare(store, store.eventLog.record[note.hole]);
  return advance(store, note, true);
}

Outcome finishEventCounting(ShmData& store, const Note& note) {
  if (note.small > 1 || !plausible(store.eventLog, note)) return Outcome::kNonsense;
  return advance(store, note, note.small == 1);
}

Outcome finishEventEmptying(ShmData& store, const Note& note) {
  if (note.hole != 0 || note.small != 0) return Outcome::kNonsense;
  EventLog& log = store.eventLog;
  log.eventLogFull = 0;
  log.readIndex = 0;
  log.writeIndex = 0;
  Journal(store).end();
  return Outcome::kFinished;
}

}  // namespace kestrove
