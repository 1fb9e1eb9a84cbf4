// events.
#include <unistd.h>

#include "kestrove/kestrove.h"
#include "tools/ctl/commands.h"

namespace ctl {
namespace {

constexpr int kListing = 1;
constexpr int kCommaSeparated = 2;

// The comma-separated layout: date, time, type, source, user, description, which may hold commas itself.
Json eventOf(const std::string& line) {
  constexpr const char* kNames[] = {"date", "time", "type", "source", "user", "description"};
  Json event;
  size_t start = 0;
  for (const char* name : kNames) {
    bool last = name == kNames[5];
    size_t comma = last ? std::string::npos : line.find(',', start);
    event[name] = line.substr(start, comma == std::string::npos ? comma : comma - start);
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  return event;
}

// False when there is no such event.
bool printEvent(const Session& session, uint32_t index, Json& events) {
  char buffer[256];
  int length = getEventString(index, buffer, sizeof buffer, session.json ? kCommaSeparated : kListing);
  if (accept(length, "event " + std::to_string(index)) == 0) return false;
  if (session.json) {
    events.push_back(eventOf(buffer));
  } else {
    fprintf(session.out, "%s\n", buffer);
  }
  return true;
}

void list(const Session& session) {
  requireStore();
  Json events = Json::array();
  for (uint32_t index = 0; printEvent(session, index, events); ++index) {
  }
  if (session.json) session.show({{"events", events}});
}

uint32_t written() {
  accept(shm_lock(), "lock");
  uint32_t index = shm->eventLog.writeIndex % SHM_EVENTS;
  shm_unlock();
  return index;
}

// Prints the events that come from now on, up to the given number of seconds (0: until stopped).
void follow(const Session& session, int seconds) {
  requireStore();
  uint32_t seen = written();
  for (int waited = 0; seconds == 0 || waited < seconds * 5; ++waited) {
    for (uint32_t now = written(); seen != now; seen = (seen + 1) % SHM_EVENTS) {
      // The newest event is the last of the count; those before it follow backwards around the ring.
      uint32_t behind = (now + SHM_EVENTS - seen) % SHM_EVENTS;
      uint32_t count = static_cast<uint32_t>(accept(getEventCount(), "events"));
      Json events = Json::array();
      if (behind <= count) printEvent(session, count - behind, events);
      for (const Json& event : events) fprintf(session.out, "%s\n", event.dump().c_str());
    }
    fflush(session.out);
    usleep(200000);
  }
}

}  // namespace

void addEventCommands(CLI::App& app, Session& session) {
  CLI::App* events = app.add_subcommand("events", "The event log");
  events->require_subcommand(0, 1);
  events->add_subcommand("list", "All events, oldest first");
  static int seconds = 0;
  CLI::App* following = events->add_subcommand("follow", "New events as they come");
  following->add_option("--seconds", seconds, "Stop after this time")->check(CLI::NonNegativeNumber);
  following->callback([&session] { follow(session, seconds); });
  CLI::App* clearing = events->add_subcommand("clear", "Empty the log");
  clearing->callback([&session] {
    requireStore();
    accept(clearEventLog(session.source, session.userName()), "the event log cannot be written");
    session.done("event log cleared");
  });
  events->callback([&session, events, following, clearing] {
    if (!following->parsed() && !clearing->parsed()) list(session);
  });
}

}  // namespace ctl
