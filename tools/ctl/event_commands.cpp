// SPDX-License-Identifier: Apache-2.0
// events.
#include <unistd.h>

#include <cerrno>
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/event_rows.h"

namespace ctl {
namespace {

constexpr useconds_t kPause = 200000;
constexpr int kLooksASecond = 5;

void requireHold(const tools::Hold& hold) {
  if (!hold) throw refusal("the store cannot be locked");
}

void list(const Session& session) {
  requireStore(session);
  Json events = Json::array();
  std::string lines;
  {
    awaitLock(session);
    tools::Hold hold;
    requireHold(hold);
    for (uint32_t index = 0; index < eventCount(); ++index) {
      if (session.json) {
        events.push_back(eventRow(index));
      } else {
        lines += eventLine(index) + "\n";
      }
    }
  }
  if (session.json) return session.show({{"events", events}});
  session.print(lines);
}

// The log between two looks: the newest events are the last of the count.
class Follower {
 public:
  explicit Follower(const Session& session) : session_(session) {
    awaitLock(session);
    tools::Hold hold;
    requireHold(hold);
    seen_ = written();
  }

  void look() {
    std::string news;
    {
      awaitLock(session_);
      tools::Hold hold;
      requireHold(hold);
      const uint32_t now = written();
      for (; seen_ != now; seen_ = (seen_ + 1) % SHM_EVENTS) {
        const uint32_t behind = (now + SHM_EVENTS - seen_) % SHM_EVENTS;
        const uint32_t count = eventCount();
        if (behind > count) continue;
        news += (session_.json ? jsonText(eventRow(count - behind), -1) : eventLine(count - behind)) + "\n";
      }
    }
    if (!news.empty()) session_.print(news);
  }

 private:
  static uint32_t written() { return shm->eventLog.writeIndex % SHM_EVENTS; }

  const Session& session_;
  uint32_t seen_ = 0;
};

struct FollowLine {
  std::optional<int> seconds;
};

// Prints the events that come from now on, up to the given number of seconds (0, or none: until stopped).
void follow(const Session& session, const FollowLine& line) {
  const int seconds = line.seconds.value_or(0);
  requireStore(session);
  Follower follower(session);
  for (int waited = 0; seconds == 0 || waited < seconds * kLooksASecond; ++waited) {
    follower.look();
    usleep(kPause);
  }
}

void clear(const Session& session) {
  requireStore(session);
  awaitLock(session);
  errno = 0;
  shm_errno = SHM_OK;
  if (clearEventLog(session.source, session.userName()) != 0) {
    throw Refusal(kNotSaved, "the event log is cleared, not saved: " + reasonText(), static_cast<int>(shm_errno));
  }
  session.done("event log cleared");
}

}  // namespace

std::vector<Command> eventCommands() {
  return {command("events", "The event log", list), command("events list", "All events, oldest first", list),
          command("events follow", "New events as they come", follow,
                  {option("--seconds", &FollowLine::seconds, takes::number(0, INT_MAX).in("seconds"),
                          "Stop after this time")}),
          changing("events clear", "Empty the log", clear)};
}

}  // namespace ctl
