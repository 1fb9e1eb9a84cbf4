// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/settings/carry_out.h"

#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/common/loading_note.h"
#include "tools/ctl/settings/carrying.h"

namespace ctl {
namespace {

constexpr Exit kPartlyApplied = static_cast<Exit>(9);

std::string lineOf(const SettingChange& change) { return change.after ? *change.after : "- " + *change.before; }

// An interrupt waits until the tables are whole. Not longer: programs are started with the mask of this process.
class Uninterrupted {
 public:
  Uninterrupted() {
    sigset_t signals;
    sigemptyset(&signals);
    for (int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) sigaddset(&signals, signal);
    sigprocmask(SIG_BLOCK, &signals, &before_);
  }
  ~Uninterrupted() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  Uninterrupted(const Uninterrupted&) = delete;
  Uninterrupted& operator=(const Uninterrupted&) = delete;

 private:
  sigset_t before_;
};

// Configuration Mode for a scope, noted, so that a death in it does not leave it behind.
class Configuring {
 public:
  Configuring() : state_(shm->operationalState) {
    if (state_ == SHM_STATE_CONFIGURATION) return;
    note_.emplace(state_);
    accept(setShmOperationalState(SHM_STATE_CONFIGURATION), "Configuration Mode");
  }
  ~Configuring() {
    if (state_ != SHM_STATE_CONFIGURATION) setShmOperationalState(state_);
  }
  Configuring(const Configuring&) = delete;
  Configuring& operator=(const Configuring&) = delete;

 private:
  uint32_t state_;
  Uninterrupted uninterrupted_;
  std::optional<tools::LoadingNote> note_;
};

// Each route that goes saves the store: after the rules, which make that long.
void takeAway(Carrying& carrying) {
  if (carrying.any("rules")) {
    const Configuring configuring;
    removeRules(carrying);
  }
  removeRoutes(carrying);
}

void fillTables(Carrying& carrying) {
  const Configuring configuring;
  setItems(carrying);
  keepVlanIds(carrying);
  changeUsers(carrying);
  changeAddresses(carrying);
  addRoutes(carrying);
  addRules(carrying);
  driveAddressEvents(carrying);
}

void saveOnce(Carrying& carrying) {
  Outcome& outcome = carrying.outcome;
  shm_errno = SHM_OK;
  errno = 0;
  outcome.saved = save_shared_memory() == 0 && shm_errno == SHM_OK;
  if (outcome.saved) return;
  outcome.unsavedReason = text(shm->config.configFileName) + ": " + (errno != 0 ? strerror(errno) : reasonText());
}

// Neither a signal that cannot be sent nor a missing engine undoes a change.
void tellEngine(const Carrying& carrying) {
  if (carrying.marks == 0 || carrying.debugging()) return;
  kestrove_mark(carrying.marks);
  notifyKestrove();
}

bool anyMade(const Outcome& outcome) {
  return std::any_of(outcome.steps.begin(), outcome.steps.end(), [](const Step& step) { return step.done; });
}

// What Configuration Mode left out, each once; then the one save.
void reapply(Carrying& carrying) {
  changeMode(carrying);
  setNames(carrying);
  if (!anyMade(carrying.outcome)) return;
  applyRoutes(carrying);
  logEvents(carrying);
  saveOnce(carrying);
  tellEngine(carrying);
  actOnSystem(carrying);
}

// In Configuration Mode of somebody else everything is only stored.
void storeOnly(Carrying& carrying) {
  changeMode(carrying);
  setNames(carrying);
  carrying.outcome.unsavedReason = "the store is in Configuration Mode";
}

// Where all was reached, what was made is what was wanted.
void finish(Outcome& outcome, const ShmData& before, const ShmData& target, Difference& wanted) {
  outcome.left = compare(*shm, target);
  outcome.made = outcome.left.empty() ? std::move(wanted) : compare(before, *shm);
  outcome.changed = !outcome.made.empty();
}

}  // namespace

Carrying::Carrying(const Session& theSession, const ShmData& theBefore, const ShmData& theTarget,
                   const CarryOptions& theOptions, const Difference& theWanted)
    : session(theSession), before(theBefore), target(theTarget), options(theOptions), wanted(theWanted) {}

bool Carrying::attempt(const SettingChange& change, const std::function<int()>& make) {
  if (stopped_) {
    cannot(change, "not tried");
    return false;
  }
  if (options.progress) options.progress(outcome.steps.size(), wanted.changes.size());
  shm_errno = SHM_OK;
  errno = 0;
  if (make() < 0) {
    cannot(change, shm_errno == SHM_OK ? "refused; the library gives no reason" : reasonText());
    return false;
  }
  outcome.steps.push_back({change.section, change.key, lineOf(change), true, ""});
  if (change.section != "rules") made_.insert(change.section + " " + change.key);
  return true;
}

void Carrying::cannot(const SettingChange& change, const std::string& reason) {
  outcome.steps.push_back({change.section, change.key, lineOf(change), false, reason});
  stopped_ = stopped_ || options.stopOnError;
}

void Carrying::failed(const SettingChange& change, const std::string& reason) {
  made_.erase(change.section + " " + change.key);
  outcome.steps.pop_back();
  cannot(change, reason);
}

std::vector<const SettingChange*> Carrying::changesOf(const std::string& section) const {
  std::vector<const SettingChange*> changes;
  for (const SettingChange& change : wanted.changes) {
    if (change.section == section) changes.push_back(&change);
  }
  return changes;
}

bool Carrying::any(const std::string& section) const {
  return std::any_of(wanted.changes.begin(), wanted.changes.end(),
                     [&section](const SettingChange& change) { return change.section == section; });
}

const SettingChange* Carrying::changeOf(const std::string& section, const std::string& key) const {
  for (const SettingChange& change : wanted.changes) {
    if (change.section == section && change.key == key) return &change;
  }
  return nullptr;
}

Exit Outcome::exit() const {
  const bool whole =
      left.empty() && std::all_of(steps.begin(), steps.end(), [](const Step& step) { return step.done; });
  if (!whole) return changed ? kPartlyApplied : kRefused;
  return unsavedReason.empty() || saved ? kDone : kNotSaved;
}

Outcome carryOut(const Session& session, const ShmData& target, const CarryOptions& options) {
  awaitLock(session);
  const tools::Hold hold;
  if (!hold) throw refusal("the store cannot be locked");
  const Image before(*shm);
  Difference wanted = compare(*before, target);
  Carrying carrying(session, *before, target, options, wanted);
  if (wanted.empty()) return carrying.outcome;
  takeAway(carrying);
  fillTables(carrying);
  carrying.follows() ? reapply(carrying) : storeOnly(carrying);
  finish(carrying.outcome, *before, target, wanted);
  return std::move(carrying.outcome);
}

Json outcomeJson(const Outcome& outcome) {
  Json json = differenceJson(outcome.made);
  json["saved"] = outcome.saved;
  if (!outcome.unsavedReason.empty()) json["reason"] = outcome.unsavedReason;
  Json failed = Json::array();
  for (const Step& step : outcome.steps) {
    if (step.done) continue;
    failed.push_back({{"section", step.section}, {"key", step.key}, {"line", step.line}, {"reason", step.reason}});
  }
  json["failed"] = failed;
  json["notes"] = outcome.notes;
  return json;
}

}  // namespace ctl
