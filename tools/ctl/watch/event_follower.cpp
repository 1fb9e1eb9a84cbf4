// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/watch/event_follower.h"

#include <cstddef>
#include <cstring>
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/common/steady_clock.h"
#include "tools/ctl/event_rows.h"
#include "tools/ctl/watch/event_news.h"
#include "tools/ctl/watch/stop.h"

namespace ctl {
namespace {

constexpr double kPause = 0.2;
constexpr size_t kHeader = offsetof(EventLog, record);

void takeLock(const Session& session, std::optional<tools::Hold>& hold) {
  awaitLock(session);
  if (!hold.emplace()) throw refusal("the store cannot be locked");
}

size_t newestSlot(const EventLog& log) { return (log.writeIndex + SHM_EVENTS - 1) % SHM_EVENTS; }

std::string lineFor(const Session& session, uint32_t index) {
  return session.forPeople() ? eventLine(index) + "\n" : session.recordLine(eventRow(index));
}

void tellGaps(const EventNews& news) {
  if (news.emptied) warn("the event log was emptied");
  if (news.missed) warn("more events came than the log holds: some are missing here");
}

}  // namespace

EventFollower::EventFollower(const Session& session) : session_(session), seen_(std::make_unique<EventLog>()) {
  std::optional<tools::Hold> hold;
  takeLock(session, hold);
  memcpy(seen_.get(), &shm->eventLog, sizeof *seen_);
}

// Without the lock: a change that is half done is one that has come.
bool EventFollower::changed() const {
  const EventLog& log = shm->eventLog;
  const size_t newest = newestSlot(*seen_);
  return memcmp(&log, seen_.get(), kHeader) != 0 ||
         memcmp(&log.record[newest], &seen_->record[newest], sizeof(EventRecord)) != 0;
}

std::string EventFollower::takeNews() {
  std::optional<tools::Hold> hold;
  takeLock(session_, hold);
  const EventNews news = newsSince(*seen_, shm->eventLog);
  memcpy(seen_.get(), &shm->eventLog, sizeof *seen_);
  std::string lines;
  const uint32_t count = eventCount();
  for (uint32_t index = count - news.count; index < count; ++index) lines += lineFor(session_, index);
  hold.reset();
  tellGaps(news);
  return lines;
}

void EventFollower::look() {
  store_.require();
  if (!changed()) return;
  const std::string lines = takeNews();
  if (!lines.empty()) session_.print(lines);
}

void followEvents(const Session& session, int seconds) {
  requireStore(session);
  EventFollower follower(session);
  const Stop stop;
  const double end = tools::steadySeconds() + seconds;
  do {
    follower.look();
  } while ((seconds == 0 || tools::steadySeconds() < end) && stop.pause(kPause));
}

}  // namespace ctl
