// SPDX-License-Identifier: Apache-2.0
#include "tools/monitor/monitor.h"

#include <syslog.h>
#include <unistd.h>

#include "kestrove/kestrove.h"
#include "tools/common/process_time.h"
#include "tools/common/program.h"

namespace monitor {
namespace {

constexpr Milliseconds kTick = 250;  // items and slots are looked at so often
constexpr char kNobody[] = "--";
constexpr TaskRow kMisc = {SHM_TASK_MISC_MONITOR, "miscMonitor", "", kAlways, "", false};

std::vector<std::string> commandOf(const TaskRow& row, const Options& options) {
  std::string command = row.command;
  for (const std::string& task : options.tasks) {
    const size_t end = task.find('=');
    if (task.substr(0, end) == row.name) command = task.substr(end + 1);
  }
  return wordsOf(command);
}

std::vector<std::string> commandOfMisc(const Options& options) {
  return {tools::ownFolder() + "/kestrove-monitor",
          "--misc",
          "--folder",
          options.folder,
          "--metrics",
          options.metrics,
          "--every",
          std::to_string(options.every)};
}

}  // namespace

Monitor::Monitor(const Options& options)
    : notes_(options.folder + "/monitor.tasks"), around_{store_, notes_, loop_, options.limits} {
  for (const TaskRow& row : taskTable()) tasks_.emplace_back(row, commandOf(row, options), around_);
  misc_ = &tasks_.emplace_back(kMisc, commandOfMisc(options), around_);
}

Exit Monitor::run() {
  if (!loop_) return kSystem;
  manager_.tell("READY=1");
  while (!loop_.toldToEnd()) {
    const Milliseconds now = clockNow();
    manager_.alive(now);
    look(now);
    loop_.sleep(pause(clockNow()));
  }
  manager_.tell("STOPPING=1");
  leave();
  return kDone;
}

void Monitor::look(Milliseconds now) {
  lookAtStore();
  lookAtOwnSlot();
  for (Task& task : tasks_) task.look(now);
  miscDue_ = misc_->wasStarted() || miscDue_;
  logWhatIsDue();
}

void Monitor::lookAtStore() {
  const Store::Change change = store_.look();
  if (change == Store::Change::kCame) {
    syslog(LOG_NOTICE, "the store is there");
    registered_ = false;
    for (Task& task : tasks_) task.storeCame();
  }
  if (const std::string why = store_.absence(); !why.empty()) {
    syslog(LOG_WARNING, "%s: the engine and the servers wait for one", why.c_str());
  }
}

// A number that a monitor left there which did not end by itself: this one takes over.
void Monitor::lookAtOwnSlot() {
  if (!store_.data() || store_.data()->taskPids[SHM_TASK_MONITOR] == getpid()) return;
  Visit visit(store_);
  if (!visit) return;
  restartDue_ = restartDue_ || (!registered_ && shm_getTaskPid(SHM_TASK_MONITOR) > 0);
  registered_ = shm_setTaskPid(SHM_TASK_MONITOR, getpid()) == 0;
}

void Monitor::logWhatIsDue() {
  logOnce(restartDue_, SHM_EVENT_MONITOR_RESTARTED);
  logOnce(miscDue_, SHM_EVENT_MISC_MONITOR_STARTED);
}

void Monitor::logOnce(bool& due, uint32_t event) {
  if (!due || !store_.data()) return;
  Visit visit(store_);
  if (!visit) return;
  logEvent(event, SHM_SOURCE_SYSTEM, kNobody);
  due = false;
}

Milliseconds Monitor::pause(Milliseconds now) const {
  Milliseconds pause = std::min(kTick, manager_.pause());
  for (const Task& task : tasks_) {
    if (task.next() != kNever) pause = std::min(pause, std::max<Milliseconds>(task.next() - now, 0));
  }
  return pause;
}

// What it watches goes on without it, but for its own helper; an empty slot says that it ended by itself.
void Monitor::leave() {
  misc_->endWithMonitor();
  Visit visit(store_);
  if (visit && shm_getTaskPid(SHM_TASK_MONITOR) == getpid()) shm_setTaskPid(SHM_TASK_MONITOR, 0);
  if (visit) shm_setTaskPid(SHM_TASK_MISC_MONITOR, 0);
}

}  // namespace monitor
