// SPDX-License-Identifier: Apache-2.0
// confirm.
#include "tools/ctl/commands.h"
#include "tools/ctl/history/author.h"
#include "tools/ctl/history/finish.h"
#include "tools/ctl/history/watcher.h"

namespace ctl {
namespace {

struct ConfirmLine {
  bool status = false;
  bool abort = false;
  bool wait = false;
};

struct WatchLine {
  std::string id;
};

constexpr char kNothing[] = "no change waits for a confirmation";

void showStatus(const Session& session) {
  const std::optional<Pending> pending = pendingConfirmation();
  if (!pending) return session.show(session.json ? Json{{"pending", false}} : Json(kNothing));
  session.show({{"pending", true},
                {"user", pending->user},
                {"command", pending->command},
                {"comment", pending->comment},
                {"time", pending->time},
                {"revision", pending->revision},
                {"secondsLeft", pending->secondsLeft}});
}

Home home() {
  std::optional<Home> found = Home::find();
  if (!found) throw Refusal(kRefused, kNothing);
  return std::move(*found);
}

HomeLock lockOf(const Session& session, const Home& home) {
  std::optional<HomeLock> lock = HomeLock::wait(home, session.waitSeconds);
  if (!lock) throw Refusal(kLocked, "another kestrovectl is changing the store; not done in time (--wait)");
  return std::move(*lock);
}

Entry waiting(const Journal& journal) {
  std::optional<Entry> entry = journal.read();
  if (!entry || !entry->confirmable()) throw Refusal(kRefused, kNothing);
  return std::move(*entry);
}

void refuseOthers(const Session& session, const Entry& entry) {
  const std::string user = logInUser(session);
  if (user == entry.user) return;
  throw Refusal(kNotPermitted, "not permitted to " + user + ": " + describe(entry) + " is confirmed by " + entry.user);
}

// Too late is taken back: by now, or right here.
[[noreturn]] void takeBack(const Session& session, const Home& home, const Entry& entry) {
  attachStore(session);
  finishEntry(session, home, entry);
  throw Refusal(kUnconfirmed, "too late: the settings before it are back");
}

void settle(const Session& session, bool keep) {
  const Home folder = home();
  const HomeLock lock = lockOf(session, folder);
  const Journal journal(folder);
  const Entry entry = waiting(journal);
  refuseOthers(session, entry);
  const bool inTime = entry.stage == Stage::kWaiting && remaining(entry, bootTimeNow()) > 0;
  if (!inTime) takeBack(session, folder, entry);
  if (keep) {
    journal.remember(entry.id, "confirmed");
    journal.remove();
    return session.done("confirmed: " + describe(entry));
  }
  attachStore(session);
  finishEntry(session, folder, entry);
  session.done("taken back: " + describe(entry));
}

// Whatever comes of it, for a script.
void await(const Session& session) {
  const Entry entry = waiting(Journal(home()));
  if (!awaitOutcome(entry.id)) throw Refusal(kUnconfirmed, describe(entry) + " was taken back");
  session.done("confirmed: " + describe(entry));
}

void confirm(const Session& session, const ConfirmLine& line) {
  if (line.status + line.abort + line.wait > 1) throw Refusal(kUsage, "one of --status, --abort and --outcome");
  if (line.status) return showStatus(session);
  if (line.wait) return await(session);
  settle(session, !line.abort);
}

void watchOver(const Session& session, const WatchLine& line) { watch(session, line.id); }

}  // namespace

std::vector<Command> confirmCommands() {
  Command hidden = changing("confirm-watch", "", watchOver, {needed("ID", &WatchLine::id, takes::text(), "")});
  hidden.hidden = true;
  return {changing("confirm", "Keep the change that was made with --confirm", confirm,
                   {flag("--status", &ConfirmLine::status, "Say what waits, and how long"),
                    flag("--abort", &ConfirmLine::abort, "Take it back now"),
                    flag("--outcome", &ConfirmLine::wait, "Wait until it is confirmed or taken back")},
                   "By the user who made it. Status 10: it was taken back."),
          hidden};
}

}  // namespace ctl
