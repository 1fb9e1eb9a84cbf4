// SPDX-License-Identifier: Apache-2.0
#include "tests/explore/search.h"

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>

#include "tests/explore/operations.h"

namespace kestrove::explore {
namespace {

constexpr int kFewSteps = 12;
constexpr int kNoBound = 1000;
constexpr int kLongestOrder = 2000;

const char* placeName(int park) {
  switch (park) {
    case kParkStart: return "start";
    case kParkCall: return "next call";
    case kParkStoreLock: return "lock";
    case kParkStoreReleased: return "released";
    case kParkSaveLock: return "save lock";
    case kParkSaveReleased: return "save released";
    case kParkTemporary: return "temporary";
    case kParkSync: return "fsync";
    case kParkImage: return "image";
    case kParkLoad: return "load";
    case kParkProgram: return "program";
    case kParkBlocked: return "blocked";
    default: return "end";
  }
}

[[noreturn]] void giveUp(const std::string& what) {
  fprintf(stderr, "explore: %s\n", what.c_str());
  exit(2);
}

}  // namespace

Search::Search(World& world, std::vector<std::unique_ptr<Process>>& processes, std::vector<Listed> operations)
    : world_(world), processes_(processes), operations_(std::move(operations)) {}

bool Search::any(unsigned flag) const {
  return std::any_of(combination_.begin(), combination_.end(),
                     [&](int number) { return (operation(number).flags & flag) != 0; });
}

const std::vector<int>& Search::trace(int process, int operation) {
  auto [found, fresh] = traces_.try_emplace({process, operation});
  if (!fresh) return found->second;
  begin({operation}, {});
  world_.restore(!any(kBuilds));
  Process& alone = *processes_[static_cast<size_t>(process)];
  for (alone.start(operation); !alone.over(); alone.go()) found->second.push_back(alone.at().park);
  world_.look(true, false, false);
  return found->second;
}

void Search::begin(const Combination& combination, Victim victim) {
  combination_ = combination;
  victim_ = victim;
  last_ = -1;
  schedule_.clear();
  killed_ = false;
  tried_.assign(combination.size(), false);
}

void Search::visit(const Combination& combination, Orders orders, Victim victim, const Visitor& visitor) {
  firstLocks_.clear();
  steps_ = 0;
  for (size_t i = 0; i < combination.size(); ++i) {
    const std::vector<int>& places = trace(static_cast<int>(i), combination[i]);
    firstLocks_.push_back(places.size() > 1 && places[1] == kParkStoreLock);
    steps_ += static_cast<int>(places.size());
  }
  orders_ = orders;
  std::vector<Step> path;
  do {
    begin(combination, victim);
    if (!visitor(run(path))) return;
  } while (backtrack(path));
}

Ending Search::run(std::vector<Step>& path) {
  world_.restore(!any(kBuilds));
  for (size_t i = 0; i < combination_.size(); ++i) processes_[i]->start(combination_[i]);
  for (size_t at = 0; !finished(); ++at) {
    Step now = nextStep();
    if (now.options.empty()) return end(true);
    if (at < path.size()) {
      if (path[at].options != now.options) giveUp("an order cannot be repeated: " + schedule_);
    } else {
      if (at > 0) {
        const Step& before = path[at - 1];
        now.preemptions = before.preemptions + (before.mayGoOn && before.taken > 0);
      }
      path.push_back(now);
    }
    if (at > kLongestOrder) giveUp("an order without an end: " + schedule_);
    move(static_cast<size_t>(path[at].options[path[at].taken]));
  }
  return end(false);
}

Search::Step Search::nextStep() const {
  Step step;
  step.options = runnable();
  auto current = std::find(step.options.begin(), step.options.end(), last_);
  step.mayGoOn = current != step.options.end();
  if (!step.mayGoOn) return step;
  std::rotate(step.options.begin(), current, current + 1);
  if (orders_ == Orders::kSerial && !atBoundary(last_)) step.options.resize(1);
  return step;
}

std::vector<int> Search::runnable() const {
  std::vector<int> found;
  for (size_t i = 0; i < combination_.size(); ++i) {
    if (canGo(i)) found.push_back(static_cast<int>(i));
  }
  return found;
}

bool Search::lockFree(size_t process, bool (Process::*holds)() const) const {
  for (size_t i = 0; i < combination_.size(); ++i) {
    if (i != process && (*processes_[i].*holds)()) return false;
  }
  return true;
}

bool Search::canGo(size_t process) const {
  const Process& one = *processes_[process];
  if (one.over()) return false;
  if (atVictim(process)) return true;
  switch (one.at().park) {
    case kParkStart: return !firstLocks_[process] || lockFree(process, &Process::holdsStore);
    case kParkStoreLock: return lockFree(process, &Process::holdsStore);
    case kParkSaveLock: return lockFree(process, &Process::holdsSave);
    case kParkBlocked: return !tried_[process];
    default: return true;
  }
}

bool Search::atBoundary(int process) const { return processes_[static_cast<size_t>(process)]->at().park == kParkCall; }

bool Search::atVictim(size_t process) const {
  return victim_.process == static_cast<int>(process) && processes_[process]->parks() == victim_.park;
}

// From the start the first lock is taken in the same step: nothing lies between.
void Search::move(size_t process) {
  Process& one = *processes_[process];
  last_ = static_cast<int>(process);
  schedule_ += std::string(schedule_.empty() ? "" : ", ") + static_cast<char>('A' + process);
  if (atVictim(process)) {
    one.kill();
    killed_ = true;
    schedule_ += " is killed";
    std::fill(tried_.begin(), tried_.end(), false);
    return;
  }
  bool starts = one.at().park == kParkStart;
  one.go();
  if (starts && one.at().park == kParkStoreLock && !atVictim(process) && canGo(process)) one.go();
  schedule_ += std::string(" to ") + placeName(one.at().park);
  bool blocked = one.at().park == kParkBlocked;
  if (!blocked) std::fill(tried_.begin(), tried_.end(), false);
  tried_[process] = blocked;
}

bool Search::finished() const {
  return std::all_of(processes_.begin(), processes_.begin() + static_cast<long>(combination_.size()),
                     [](const auto& one) { return one->over(); });
}

std::string Search::resultsText() const {
  std::string text;
  for (size_t i = 0; i < combination_.size(); ++i) {
    const Report& report = processes_[i]->at();
    text += static_cast<char>('A' + i);
    for (int call = 0; call < report.calls; ++call) {
      text += " " + std::to_string(report.result[call].result) + "(" + std::to_string(report.result[call].code) + ")";
    }
    if (report.park == kParkEnded) text += " ended " + std::to_string(report.status);
    text += "\n";
  }
  return text;
}

Ending Search::end(bool stuck) {
  ++schedules_;
  for (size_t i = 0; i < combination_.size(); ++i) {
    if (!processes_[i]->over()) processes_[i]->kill();
  }
  Ending ending;
  ending.outcome = world_.look(any(kKernel), victim_.process >= 0, inWords_);
  std::string results = (stuck ? "nobody can go on\n" : "") + resultsText();
  ending.outcome.mark[kResults] = markOf(results.data(), results.size());
  if (inWords_) ending.outcome.text[kResults] = results;
  ending.schedule = schedule_;
  ending.killed = killed_;
  ending.stuck = stuck || world_.programWaits();
  return ending;
}

int Search::bound() const { return steps_ > kFewSteps ? mostPreemptions_ : kNoBound; }

// To the last step that can be taken otherwise.
bool Search::backtrack(std::vector<Step>& path) const {
  while (!path.empty()) {
    Step& last = path.back();
    bool affordable = !last.mayGoOn || last.preemptions < bound() || orders_ == Orders::kSerial;
    if (affordable && last.taken + 1 < last.options.size()) {
      ++last.taken;
      return true;
    }
    path.pop_back();
  }
  return false;
}

}  // namespace kestrove::explore
