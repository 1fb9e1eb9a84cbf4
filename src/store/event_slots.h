// SPDX-License-Identifier: Apache-2.0
// Changes of the event ring that leave no torn log behind a death. To be used under the store lock. No index in the
// store is trusted.
#pragma once

#include "store/journal.h"

namespace kestrove {

constexpr uint32_t eventSlot(uint32_t number) { return number % SHM_EVENTS; }

// Stores an event in the next slot; in a full ring it takes the place of the oldest.
void appendEventRecord(ShmData& store, const EventRecord& record);

// The records stay where they are, out of reach.
void emptyEventRing(ShmData& store);

Outcome finishEventChanging(ShmData& store, const Note& note);
Outcome finishEventCounting(ShmData& store, const Note& note);
Outcome finishEventEmptying(ShmData& store, const Note& note);

}  // namespace kestrove
