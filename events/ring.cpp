#include "events/ring.h"

#include "store/text.h"

namespace kestrove {
namespace {

uint32_t slotOf(uint32_t number) { return number % SHM_EVENTS; }

}  // namespace

void appendEvent(EventLog& log, int32_t timestamp, uint32_t id, uint32_t source, const char* user) {
  if (log.eventLogFull) log.readIndex = slotOf(slotOf(log.readIndex) + 1);
  uint32_t slot = slotOf(log.writeIndex);
  EventRecord& record = log.record[slot];
  record.timestamp = timestamp;
  record.eventId = id;
  record.source = source;
  setField(record.userName, user);
  log.writeIndex = slotOf(slot + 1);
  if (log.writeIndex == slotOf(log.readIndex)) log.eventLogFull = 1;
}

void emptyEvents(EventLog& log) {
  log.eventLogFull = 0;
  log.readIndex = 0;
  log.writeIndex = 0;
}

const EventRecord* findEvent(const EventLog& log, uint32_t index) {
  if (index >= SHM_EVENTS) return nullptr;
  if (log.eventLogFull) return &log.record[slotOf(index + log.readIndex)];
  return index < log.writeIndex ? &log.record[index] : nullptr;
}

}  // namespace kestrove
