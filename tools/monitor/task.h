// SPDX-License-Identifier: Apache-2.0
// One task: its process, and what is to become of it. Whatever has to be done is found anew at every look, so what
// could not be done for want of the lock is done at a later one.
#pragma once

#include <string>
#include <vector>

#include "tools/monitor/clock.h"
#include "tools/monitor/loop.h"
#include "tools/monitor/notes.h"
#include "tools/monitor/process.h"
#include "tools/monitor/store.h"
#include "tools/monitor/task_table.h"

namespace monitor {

struct Limits {
  Milliseconds firstDelay = 1000;     // after the first start that failed
  Milliseconds mostDelay = 60000;     // after many
  Milliseconds ready = 30000;         // for an engine to take its slot
  Milliseconds end = 5000;            // for a task to end that was told to
  Milliseconds settled = 10000;       // who lived so long has not failed
  Milliseconds afterReboot = 300000;  // until a machine that did not go down gets its engine back
};

// What all tasks share.
struct Surroundings {
  Store& store;
  Notes& notes;
  const Loop& loop;
  Limits limits;
};

class Task {
 public:
  Task(const TaskRow& row, std::vector<std::string> command, Surroundings& around);

  void look(Milliseconds now);
  // The store was built anew.
  void storeCame();
  // When it wants to be looked at again.
  Milliseconds next() const { return next_; }
  bool running() const { return static_cast<bool>(process_); }
  // An own helper goes with the monitor.
  void endWithMonitor();
  // Since the last question, whether it was started.
  bool wasStarted();

 private:
  enum class State { kDown, kStarting, kUp, kEnding, kGivenUp };

  void lookAtProcess(Milliseconds now);
  void lookWithoutProcess(Milliseconds now);
  void lookAtSlot(Milliseconds now);
  void lookAtStart(Milliseconds now);
  void lookAtEngineSlot(Milliseconds now);
  void ready(Milliseconds now);
  void over(Milliseconds now);
  void failed(Milliseconds now);
  void end(Milliseconds now, int number);
  void emptySlot(bool ofStrangers) const;
  bool adoptOccupant(Milliseconds now);
  bool take(int pid, Milliseconds now);
  void begin(Process process, State state, Milliseconds now);
  void start(Milliseconds now);
  bool mayStart(Milliseconds now);
  bool countStart(Milliseconds now);
  bool tooManyStarts();
  void giveUp(const char* why);
  void reboot(Milliseconds now);
  void clearCounters();
  Wanted wanted() const;
  int slotPid() const;
  void writeSlot(int pid) const;
  void at(Milliseconds time) { next_ = time < next_ ? time : next_; }

  const TaskRow& row_;
  std::vector<std::string> command_;
  Surroundings& around_;
  Process process_;
  State state_ = State::kDown;
  Milliseconds since_ = 0;      // of the state
  Milliseconds notBefore_ = 0;  // the next start
  Milliseconds next_ = 0;
  Delay failing_;
  Delay again_{100, 500};  // for an engine that was ready: it is missed at once
  bool wasReady_ = false;
  bool told_ = false;     // to end, by the monitor
  bool missing_ = false;  // that its program is missing was said
  bool started_ = false;
  bool toClear_ = false;  // the counters of failed starts
};

}  // namespace monitor
