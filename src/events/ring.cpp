// SPDX-License-Identifier: Apache-2.0
#include "events/ring.h"

#include "store/text.h"

namespace kestrove {

void appendEvent(ShmData& store, int32_t timestamp, uint32_t id, uint32_t source, const char* user) {
  EventRecord record;
  record.timestamp = timestamp;
  record.eventId = id;
  record.source = source;
  setField(record.userName, user);
  appendEventRecord(store, record);
}

void emptyEvents(ShmData& store) { emptyEventRing(store); }

const EventRecord* findEvent(const EventLog& log, uint32_t index) {
  if (index >= SHM_EVENTS) return nullptr;
  if (log.eventLogFull) return &log.record[eventSlot(index + log.readIndex)];
  return index < log.writeIndex ? &log.record[index] : nullptr;
}

}  // namespace kestrove
