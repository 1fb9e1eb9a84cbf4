// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/history/finish.h"

#include <syslog.h>
#include <unistd.h>

#include <cerrno>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/ctl/history/author.h"
#include "tools/ctl/history/recording.h"
#include "tools/ctl/settings/carry_out.h"

namespace ctl {
namespace {

bool goesForward(const Entry& entry) { return entry.stage == Stage::kForward; }

std::string sentenceOf(const Entry& entry) {
  if (goesForward(entry)) return describe(entry) + " was interrupted: its settings are carried out now";
  return describe(entry) + " was not confirmed: the settings before it are back";
}

void tell(const std::string& sentence) {
  syslog(LOG_NOTICE, "kestrovectl: %s", sentence.c_str());
  warn(sentence);
}

template <typename Step>
void tolerate(Step step) {
  try {
    step();
  } catch (const Refusal& refusal) {
    tell(refusal.what());
  }
}

// In the name of who made the change.
Session actingFor(const Session& session, const Entry& entry) {
  Session acting = session;
  acting.source = entry.source;
  acting.user = entry.eventUser;
  acting.confirmMinutes = -1;
  return acting;
}

CarryOptions optionsOf(const Entry& entry) {
  CarryOptions options;
  for (const auto& [name, line] : entry.passwordLines.items()) {
    if (line.is_string()) options.passwordLines[name] = line.get<std::string>();
  }
  return options;
}

void tellSteps(const Outcome& outcome) {
  for (const Step& step : outcome.steps) {
    if (!step.done) tell(step.line + ": " + step.reason);
  }
}

Revision revisionOf(const Entry& entry, const Session& acting) {
  return {.user = entry.user,
          .source = sourceName(acting),
          .comment = goesForward(entry) ? "interrupted, carried out" : "not confirmed, taken back",
          .command = entry.command};
}

constexpr uint32_t kEveryMark = SHM_CHANGE_LAN_RATE | SHM_CHANGE_WAN_RATE | SHM_CHANGE_LAN_MTU | SHM_CHANGE_WAN_MTU |
                                SHM_CHANGE_COMPRESSION | SHM_CHANGE_CONGESTION | SHM_CHANGE_RULES | SHM_CHANGE_ITEM_38;

// The death may have come behind the tables and in front of what follows from them, which a comparison of settings does
// not show: interfaces, kernel, file and engine get all of it once more.
void followTables() {
  if (shm->operationalState != SHM_STATE_OPERATIONAL) return;
  OpModeContext context = {};
  context.mode = shm->config.opModeState;
  addAddressesToInterfaces(&context);
  addAllRoutes();
  kestrove_mark(kEveryMark);
  notifyKestrove();
  shm_errno = SHM_OK;
  errno = 0;
  if (save_shared_memory() != 0 || shm_errno != SHM_OK) tell("not saved: " + reasonText());
}

void carryOutEntry(const Session& acting, const Home& home, const Entry& entry) {
  const PartOfAnother part;
  awaitLock(acting);
  tools::Hold hold;
  if (!hold) throw refusal("the store cannot be locked");
  Ledger ledger;
  ledger.open(&home);
  tellSteps(carryOut(acting, *imageFromLines(settingsIn(entry.settings), *shm), optionsOf(entry)));
  if (entry.interrupted) followTables();
  if (ledger.changed()) ledger.close(&home, revisionOf(entry, acting));
  if (!ledger.missing().empty()) tell("there is no revision of that: " + ledger.missing());
}

}  // namespace

// On a full disk the journal stays as it is: then the same is done once more, which changes nothing. It says what is
// going to be done only when nobody else has the store: who was told that somebody has it was told the end.
void finishEntry(const Session& session, const Home& home, Entry entry) {
  const Journal journal(home);
  std::optional<tools::Hold> hold;
  awaitLock(session);
  if (!hold.emplace()) throw refusal("the store cannot be locked");
  entry.interrupted = entry.stage != Stage::kWaiting;
  if (!goesForward(entry) && entry.stage != Stage::kBack) {
    entry.stage = Stage::kBack;
    tolerate([&] { journal.write(entry); });
  }
  carryOutEntry(actingFor(session, entry), home, entry);
  hold.reset();
  if (!goesForward(entry)) tolerate([&] { journal.remember(entry.id, "taken back"); });
  journal.remove();
  tell(sentenceOf(entry));
}

void finishAbandoned(const Session& session, const Home& home, Urgency urgency) {
  const std::optional<Entry> entry = Journal(home).read();
  if (!entry) return;
  const bool waits = entry->stage == Stage::kWaiting && remaining(*entry, bootTimeNow()) > 0;
  if (!waits || urgency == Urgency::kAll) finishEntry(session, home, *entry);
}

// A folder that cannot be used keeps the appliance from nothing; a lock that others have too long is theirs.
EndAtStart::EndAtStart(double waitSeconds) {
  session_.waitSeconds = waitSeconds;
  if (keepsNothing() || !journalThere()) return;
  try {
    home_ = Home::find();
    if (home_) lock_ = HomeLock::wait(*home_, waitSeconds);
  } catch (const Refusal& refusal) {
    tell(std::string("the journal cannot be read: ") + refusal.what());
  }
}

bool EndAtStart::end() {
  if (!lock_) return true;
  try {
    finishAbandoned(session_, *home_, Urgency::kAll);
    return true;
  } catch (const Refusal& refusal) {
    tell(std::string("a change is not ended: ") + refusal.what());
    return false;
  }
}

// Whoever holds the lock is at it, or is a change that is being made.
void finishAbandoned(const Session& session) {
  if (keepsNothing() || PartOfAnother::any() || !journalThere()) return;
  try {
    const std::optional<Home> home = Home::find();
    const std::optional<HomeLock> lock = home ? HomeLock::wait(*home, 0) : std::nullopt;
    if (lock) finishAbandoned(session, *home, Urgency::kOverdue);
  } catch (const Refusal& refusal) {
    warn(std::string("a change is not ended: ") + refusal.what());
  }
}

}  // namespace ctl
