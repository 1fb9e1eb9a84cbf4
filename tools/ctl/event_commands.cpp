// SPDX-License-Identifier: Apache-2.0
// events.
#include <cerrno>
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/event_rows.h"
#include "tools/ctl/watch/event_follower.h"

namespace ctl {
namespace {

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
      if (!session.forPeople()) {
        events.push_back(eventRow(index));
      } else {
        lines += eventLine(index) + "\n";
      }
    }
  }
  if (!session.forPeople()) return session.show({{"events", events}});
  session.print(lines);
}

struct FollowLine {
  bool follow = false;
  std::optional<int> seconds;
};

void follow(const Session& session, const FollowLine& line) { followEvents(session, line.seconds.value_or(0)); }

void listOrFollow(const Session& session, const FollowLine& line) {
  if (line.follow) return follow(session, line);
  if (line.seconds) throw Refusal(kUsage, "--seconds goes with --follow");
  list(session);
}

void clear(const Session& session) {
  requireStore(session);
  awaitLock(session);
  errno = 0;
  shm_errno = SHM_OK;
  if (clearEventLog(session.source, session.userName()) != 0) {
    throw Refusal(kNotSaved, "the event log is cleared, not saved: " + reasonText(), static_cast<int>(shm_errno),
                  reasonError());
  }
  session.done("event log cleared");
}

}  // namespace

std::vector<Command> eventCommands() {
  const std::vector<Argument<FollowLine>> seconds = {option(
      "--seconds", &FollowLine::seconds, takes::number(0, INT_MAX).in("seconds"), "Stop after this time; 0 is never")};
  const std::vector<Argument<FollowLine>> following = {
      flag("--follow", &FollowLine::follow, "New events as they come, until Ctrl-C")};
  return {command("events", "The event log", listOrFollow, following + seconds),
          command("events list", "All events, oldest first", listOrFollow, following + seconds),
          command("events follow", "New events as they come", follow, seconds),
          changing("events clear", "Empty the log", clear)};
}

}  // namespace ctl
