// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/history/recording.h"

#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>

#include "kestrove/segment.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/history/author.h"
#include "tools/ctl/history/finish.h"
#include "tools/ctl/history/password_lines.h"
#include "tools/ctl/history/watcher.h"

namespace ctl {
namespace {

// Programs of the appliance that a change runs may use kestrovectl in their turn: that is part of the change.
constexpr char kWithin[] = "KESTROVE_CHANGE";

constexpr double kNanosecondsOfMinute = 60e9;

int running = 0;
bool made = false;

bool withinAnother() {
  const char* pid = getenv(kWithin);
  const int number = pid ? atoi(pid) : 0;
  return number > 1 && (kill(number, 0) == 0 || errno == EPERM);
}

std::string minutesText(double seconds) {
  char text[32];
  snprintf(text, sizeof text, "%.3g minutes", seconds / 60);
  return text;
}

std::string sentenceOf(const Pending& pending) {
  return "to be confirmed within " + minutesText(pending.secondsLeft) +
         " (kestrovectl confirm); otherwise the former settings come back";
}

}  // namespace

void Recorded::addTo(Json& result) const {
  if (missing.empty() && !pending) return;
  if (!result.is_object()) result = Json{{"result", result}};
  if (!missing.empty()) result["revision"] = nullptr;
  if (pending) result["confirm"] = {{"user", pending->user}, {"secondsLeft", pending->secondsLeft}};
}

std::string Recorded::text() const { return pending ? sentenceOf(*pending) + "\n" : ""; }

void Recorded::warn() const {
  if (!missing.empty()) ctl::warn("applied, without a revision: " + missing);
}

PartOfAnother::PartOfAnother() {
  if (++running == 1) setenv(kWithin, std::to_string(getpid()).c_str(), 1);
}
PartOfAnother::~PartOfAnother() {
  if (--running == 0) unsetenv(kWithin);
}
bool PartOfAnother::any() { return running > 0; }

bool Recording::any() { return made; }
void Recording::forget() { made = false; }

Recording::Recording(const Session& session) : session_(session), inert_(PartOfAnother::any() || keepsNothing()) {
  if (!session.keepsRevision) inert_ = true;
  made = made || session.keepsRevision;
  if (!inert_) lock();
  others_.emplace();
}

Recording::~Recording() {
  if (begun_ && shm) {
    try {
      const Recorded recorded = finish();
      recorded.warn();
      if (recorded.pending) ctl::warn(sentenceOf(*recorded.pending));
    } catch (const Refusal& refusal) {
      ctl::warn(refusal.what());
    }
  }
}

// A folder that cannot be used makes a change no worse than it was without one, but nothing can be taken back then.
void Recording::lock() {
  try {
    home_ = Home::make();
    lock_ = HomeLock::wait(*home_, 0);
    inert_ = !lock_ && withinAnother();
    if (!lock_ && !inert_) lock_ = HomeLock::wait(*home_, session_.waitSeconds);
    if (lock_) return takeOver();
  } catch (const Refusal& refusal) {
    if (session_.toBeConfirmed()) throw;
    home_.reset();
    missing_ = refusal.what();
    return;
  }
  if (!inert_) throw Refusal(kLocked, "another kestrovectl is changing the store; not done in time (--wait)");
}

// The journal is nobody's but the holder's of the lock.
void Recording::takeOver() {
  finishAbandoned(session_, *home_, Urgency::kOverdue);
  const std::optional<Entry> other = Journal(*home_).read();
  if (!other) return;
  const std::string waits = describe(*other) + " waits for its confirmation";
  if (session_.toBeConfirmed()) throw Refusal(kRefused, waits + ": one at a time");
  ctl::warn(waits + "; without it this change goes back, too");
}

void Recording::begin() {
  if (inert_) return;
  begun_ = true;
  ledger_.open(home_ ? &*home_ : nullptr);
  if (session_.toBeConfirmed()) arm();
}

void Recording::arm() {
  entry_ = entryOf(Stage::kTrying);
  entry_.settings = ledger_.before().empty() ? runningBody() : ledger_.before();
  entry_.passwordLines = passwordLines(*shm);
  begun_ = false;  // what cannot be taken back is not begun
  writeJournal(Stage::kTrying);
  try {
    startWatcher(entry_.id);
  } catch (const Refusal&) {
    dropJournal();
    throw;
  }
  begun_ = true;
}

void Recording::aim(const Image& target) {
  if (inert_ || !home_ || session_.toBeConfirmed() || Journal(*home_).read()) return;
  entry_ = entryOf(Stage::kForward);
  entry_.settings = ledger_.aim(target);
  entry_.passwordLines = passwordLines(*shm);
  try {
    writeJournal(Stage::kForward);
  } catch (const Refusal& refusal) {
    missing_ = refusal.what();
  }
}

Entry Recording::entryOf(Stage stage) const {
  const BootTime now = bootTimeNow();
  return {.stage = stage,
          .id = std::to_string(getpid()) + "-" + std::to_string(now.nanoseconds),
          .user = logInUser(session_),
          .comment = session_.comment,
          .command = commandText(session_.words),
          .time = timeJson(static_cast<int32_t>(time(nullptr))).get<std::string>(),
          .source = session_.source,
          .eventUser = session_.user,
          .minutes = session_.confirmMinutes,
          .deadline = now.nanoseconds + static_cast<int64_t>(session_.confirmMinutes * kNanosecondsOfMinute),
          .boot = now.boot};
}

void Recording::writeJournal(Stage stage) {
  entry_.stage = stage;
  Journal(*home_).write(entry_);
  journaled_ = true;
}

void Recording::dropJournal() {
  if (!journaled_) return;
  journaled_ = false;
  Journal(*home_).remove();
}

Revision Recording::revision() const {
  return {.user = logInUser(session_),
          .source = sourceName(session_),
          .comment = session_.comment,
          .command = commandText(session_.words)};
}

Recorded Recording::finish() { return finish(*shm); }

Recorded Recording::finish(const ShmData& store) {
  Recorded recorded;
  if (!begun_) return recorded;
  begun_ = false;
  const bool changed = ledger_.changed(store);
  if (changed || always_) {
    recorded.revision = ledger_.close(home_ ? &*home_ : nullptr, revision(), store);
    recorded.missing = missing_.empty() ? ledger_.missing() : missing_;
  }
  if (changed && entry_.stage == Stage::kTrying && journaled_) {
    await(recorded);
  } else {
    dropJournal();
  }
  return recorded;
}

// The time counts from here. Where the journal cannot be written any more nobody could confirm: the change goes back.
void Recording::await(Recorded& recorded) {
  const BootTime now = bootTimeNow();
  entry_.revision = recorded.revision;
  entry_.deadline = now.nanoseconds + static_cast<int64_t>(session_.confirmMinutes * kNanosecondsOfMinute);
  try {
    writeJournal(Stage::kWaiting);
  } catch (const Refusal& refusal) {
    finishEntry(session_, *home_, entry_);
    throw Refusal(kUnconfirmed, std::string("taken back, because it could not be confirmed: ") + refusal.what());
  }
  recorded.pending = pendingOf(entry_, now);
}

}  // namespace ctl
