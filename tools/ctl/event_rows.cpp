// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/event_rows.h"

#include "kestrove/kestrove.h"
#include "tools/common/plain_text.h"

namespace ctl {
namespace {

constexpr int kListing = 1;
constexpr int kCommaSeparated = 2;

// Slot numbers of a damaged store are taken modulo the ring, as the library does.
const EventRecord& recordAt(uint32_t index) {
  const EventLog& log = shm->eventLog;
  return log.record[(log.eventLogFull ? index + log.readIndex : index) % SHM_EVENTS];
}

std::string lineOf(uint32_t index, int layout) {
  char buffer[256] = {};
  accept(getEventString(index, buffer, sizeof buffer, layout), "event " + std::to_string(index));
  return buffer;
}

// Of "date,time,type,source,user,description", where user and description may hold commas themselves.
std::string field(const std::string& line, int number) {
  size_t start = 0;
  for (int i = 0; i < number && start != std::string::npos; ++i) start = line.find(',', start) + 1;
  return line.substr(start, line.find(',', start) - start);
}

}  // namespace

uint32_t eventCount() {
  const EventLog& log = shm->eventLog;
  return log.eventLogFull ? uint32_t{SHM_EVENTS} : log.writeIndex % SHM_EVENTS;
}

Json eventRow(uint32_t index) {
  constexpr int kType = 2;
  constexpr int kSource = 3;
  const EventRecord& record = recordAt(index);
  const std::string line = lineOf(index, kCommaSeparated);
  return {{"time", timeJson(record.timestamp)},
          {"type", field(line, kType)},
          {"source", field(line, kSource)},
          {"user", text(record.userName)},
          {"description", getEventMessage(record.eventId)}};
}

std::string eventLine(uint32_t index) { return tools::escaped(lineOf(index, kListing)); }

}  // namespace ctl
