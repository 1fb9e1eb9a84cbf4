// SPDX-License-Identifier: Apache-2.0
// The circular log in the store. It holds no lock and trusts no index that it finds there.
#pragma once

#include "store/event_slots.h"

namespace kestrove {

// Stores an event in the next slot; in a full ring it takes the place of the oldest.
void appendEvent(ShmData& store, int32_t timestamp, uint32_t id, uint32_t source, const char* user);

// Forgets every event. The records stay where they are, out of reach.
void emptyEvents(ShmData& store);

// The index-th oldest event, 0 being the oldest; null when there is none.
const EventRecord* findEvent(const EventLog& log, uint32_t index);

}  // namespace kestrove
