// SPDX-License-Identifier: Apache-2.0
#include "tools/monitor/task.h"

#include <signal.h>
#include <syslog.h>
#include <unistd.h>

#include <fstream>

#include "kestrove/kestrove.h"

namespace monitor {
namespace {

constexpr size_t kLongestName = 15;  // that the kernel keeps of a process
constexpr char kNobody[] = "--";
constexpr const char* kReboot[] = {"/sbin/reboot", nullptr};
constexpr char kNull[] = "/dev/null";

std::string shortName(const std::string& path) { return path.substr(path.rfind('/') + 1).substr(0, kLongestName); }

int readPid(const char* path) {
  int pid = 0;
  std::ifstream(path) >> pid;
  return pid;
}

}  // namespace

Task::Task(const TaskRow& row, std::vector<std::string> command, Surroundings& around)
    : row_(row),
      command_(std::move(command)),
      around_(around),
      failing_(around.limits.firstDelay, around.limits.mostDelay) {}

void Task::look(Milliseconds now) {
  next_ = kNever;
  if (process_ && process_.ended()) over(now);
  if (process_) {
    lookAtProcess(now);
  } else {
    lookWithoutProcess(now);
  }
  if (toClear_) clearCounters();
}

void Task::lookAtProcess(Milliseconds now) {
  if (state_ != State::kEnding && !command_.empty() && wanted() == Wanted::kOff) end(now, SIGTERM);
  if (state_ == State::kEnding && now >= since_ + around_.limits.end) end(now, SIGKILL);
  if (state_ == State::kEnding) return at(since_ + around_.limits.end);
  lookAtSlot(now);
}

void Task::lookAtSlot(Milliseconds now) {
  if (!around_.store.data()) return;
  if (row_.isEngine) return lookAtEngineSlot(now);
  if (slotPid() != process_.pid()) writeSlot(process_.pid());
}

// An engine takes its slot when it is ready, and another may take it from it: that one is the engine then.
void Task::lookAtEngineSlot(Milliseconds now) {
  if (slotPid() != process_.pid()) {
    const Process other = Process::adopt(slotPid(), 0);
    if (other && other.name() == process_.name()) return end(now, SIGTERM);
    if (state_ == State::kUp) return writeSlot(process_.pid());
  }
  if (state_ == State::kStarting) lookAtStart(now);
}

void Task::ready(Milliseconds now) {
  state_ = State::kUp;
  since_ = now;
  wasReady_ = toClear_ = true;
  failing_.reset();
  syslog(LOG_NOTICE, "%s is ready, process %d", row_.name, process_.pid());
}

void Task::lookAtStart(Milliseconds now) {
  if (slotPid() == process_.pid()) return ready(now);
  at(since_ + around_.limits.ready);
  if (now < next_) return;
  syslog(LOG_ERR, "%s, process %d, is not ready in time", row_.name, process_.pid());
  end(now, SIGKILL);
  told_ = false;
}

// Between two looks it may have become ready and died: its number is in the slot then.
void Task::over(Milliseconds now) {
  const int pid = process_.pid();
  if (state_ == State::kStarting && around_.store.data() && slotPid() == pid) ready(now);
  syslog(told_ ? LOG_NOTICE : LOG_WARNING, "%s, process %d, has ended: %s", row_.name, pid, process_.ending().c_str());
  process_ = {};
  around_.notes.forget(row_.slot);
  if (around_.store.data() && slotPid() == pid) writeSlot(0);
  if (!told_) failed(now);
  state_ = State::kDown;
  told_ = false;
}

void Task::failed(Milliseconds now) {
  Delay& delay = wasReady_ ? again_ : failing_;
  if ((wasReady_ || !row_.isEngine) && now >= since_ + around_.limits.settled) {
    delay.reset();
    notBefore_ = now;
    return;
  }
  notBefore_ = now + delay.next();
}

// Never more than one signal at a time: the limit begins anew.
void Task::end(Milliseconds now, int number) {
  process_.signal(number);
  state_ = State::kEnding;
  since_ = now;
  told_ = true;
}

void Task::endWithMonitor() {
  if (process_) process_.signal(SIGTERM);
}

bool Task::wasStarted() {
  const bool started = started_;
  started_ = false;
  return started;
}

void Task::lookWithoutProcess(Milliseconds now) {
  if (!around_.store.data() && row_.item != kAlways) return;
  if (adoptOccupant(now)) return;
  const bool toStart = wanted() == Wanted::kOn && !command_.empty();
  if (around_.store.data() && slotPid() != 0) emptySlot(toStart);
  if (!toStart) return;
  if (state_ == State::kGivenUp && +around_.store.data()->config.kestroveRebootCount != 0) return;
  if (now < notBefore_) return at(notBefore_);
  start(now);
}

// A dead number is taken out, that of a stranger only where the task's own is to come.
void Task::emptySlot(bool ofStrangers) const {
  if (ofStrangers || !Process::adopt(slotPid(), 0)) writeSlot(0);
}

bool Task::adoptOccupant(Milliseconds now) {
  if (around_.store.data() && take(slotPid(), now)) return true;
  return row_.pidFile[0] != '\0' && take(readPid(row_.pidFile), now);
}

// A number that somebody used again is told by the time when its process began, or else by its name.
bool Task::take(int pid, Milliseconds now) {
  const unsigned long long since = around_.notes.since(row_.slot, pid);
  Process process = Process::adopt(pid, since);
  if (!process) return false;
  const std::string name = process.name();
  if (since == 0 && name != row_.name && (command_.empty() || name != shortName(command_[0]))) return false;
  syslog(LOG_NOTICE, "%s runs already, process %d", row_.name, pid);
  begin(std::move(process), State::kUp, now);
  return true;
}

void Task::begin(Process process, State state, Milliseconds now) {
  process_ = std::move(process);
  state_ = state;
  since_ = now;
  wasReady_ = state == State::kUp && row_.isEngine;
  told_ = false;
  around_.loop.watch(process_.descriptor());
  around_.notes.note(row_.slot, process_.pid(), process_.since());
}

void Task::start(Milliseconds now) {
  if (!mayStart(now)) return;
  Process process = Process::start(command_);
  if (!process) {
    syslog(LOG_ERR, "%s cannot be started: %m", row_.name);
    return failed(now);
  }
  syslog(LOG_NOTICE, "%s started, process %d", row_.name, process.pid());
  begin(std::move(process), row_.isEngine ? State::kStarting : State::kUp, now);
  started_ = true;
}

bool Task::mayStart(Milliseconds now) {
  const bool there = access(command_[0].c_str(), X_OK) == 0;
  if (!there && !missing_) syslog(LOG_WARNING, "%s is not started: %s: %m", row_.name, command_[0].c_str());
  missing_ = !there;
  return there && (!row_.isEngine || countStart(now));
}

// Nothing is started that was not counted: without the lock it waits.
bool Task::countStart(Milliseconds now) {
  {
    Visit visit(around_.store);
    if (!visit) return false;
    if (checkKestroveRebootCounter() != 0) {
      giveUp("too many reboots in a row because it would not start");
      return false;
    }
    if (incrKestroveRestartCounter() == 0) return true;
    if (!tooManyStarts()) return false;
    logEvent(SHM_EVENT_SYSTEM_REBOOTED, SHM_SOURCE_SYSTEM, kNobody);
  }
  reboot(now);
  return false;
}

// The counter of starts is kept with the store: it has to begin anew after the reboot. A reboot that is not counted on
// the disk would be followed by another for ever.
bool Task::tooManyStarts() {
  resetKestroveRestartCounter();
  if (incrKestroveRebootCounter() == 0) return true;
  giveUp(shm_errno == SHM_EREBOOTS ? "too many reboots in a row because it would not start"
                                   : "it would not start, and a reboot cannot be counted");
  return false;
}

void Task::giveUp(const char* why) {
  if (state_ != State::kGivenUp) {
    syslog(LOG_CRIT, "%s is given up: %s; \"kestrovectl engine restart\" begins anew", row_.name, why);
  }
  state_ = State::kGivenUp;
}

void Task::reboot(Milliseconds now) {
  syslog(LOG_CRIT, "%s would not start: the machine is rebooted", row_.name);
  runCommand(const_cast<char* const*>(kReboot), kNull, kNull);
  notBefore_ = now + around_.limits.afterReboot;
}

// The reboots are counted in the configuration file: it is written only where there were some.
void Task::clearCounters() {
  Visit visit(around_.store);
  if (!visit) return;
  toClear_ = false;
  resetKestroveRestartCounter();
  if (+shm->config.kestroveRebootCount != 0) resetKestroveRebootCounter();
}

// An engine that goes on at a store which nobody else sees any more is of no use.
void Task::storeCame() {
  if (state_ == State::kGivenUp) state_ = State::kDown;
  if (!row_.isEngine || !process_ || command_.empty() || state_ == State::kEnding) return;
  if (slotPid() == process_.pid()) return;
  syslog(LOG_NOTICE, "%s, process %d, is told to end: the store was built anew", row_.name, process_.pid());
  end(clockNow(), SIGTERM);
}

Wanted Task::wanted() const {
  const ShmData* data = around_.store.data();
  if (row_.item == kAlways) return Wanted::kOn;
  return data ? monitor::wanted(row_, data->config) : Wanted::kUnclear;
}

int Task::slotPid() const { return around_.store.data()->taskPids[row_.slot]; }

// Slot 0 has no setter.
void Task::writeSlot(int pid) const {
  Visit visit(around_.store);
  if (visit) shm->taskPids[row_.slot] = pid;
}

}  // namespace monitor
