// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/watch/event_news.h"

#include <algorithm>
#include <cstring>

namespace ctl {
namespace {

uint32_t held(const EventLog& log) { return log.eventLogFull ? uint32_t{SHM_EVENTS} : log.writeIndex % SHM_EVENTS; }

bool sameRecords(const EventLog& before, const EventLog& now, uint32_t count) {
  for (uint32_t i = 1; i <= count; ++i) {
    const uint32_t slot = (before.writeIndex + SHM_EVENTS - i) % SHM_EVENTS;
    if (memcmp(&before.record[slot], &now.record[slot], sizeof(EventRecord)) != 0) return false;
  }
  return true;
}

// A full log that is not full any more, or one that holds less than both looks make, was cleared.
bool wentOn(const EventLog& before, const EventLog& now, uint32_t added) {
  const uint32_t expected = std::min(held(before) + added, uint32_t{SHM_EVENTS});
  return held(now) == expected && sameRecords(before, now, expected - added);
}

}  // namespace

EventNews newsSince(const EventLog& before, const EventLog& now) {
  const uint32_t added = (now.writeIndex % SHM_EVENTS + SHM_EVENTS - before.writeIndex % SHM_EVENTS) % SHM_EVENTS;
  if (wentOn(before, now, added)) return {added, false, false};
  if (now.eventLogFull) return {SHM_EVENTS, false, true};
  return {held(now), true, false};
}

}  // namespace ctl
