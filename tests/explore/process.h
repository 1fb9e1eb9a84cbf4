// SPDX-License-Identifier: Apache-2.0
// A process at the store, moved from one place where it stands still to the next.
#pragma once

#include <string>

#include "tests/explore/report.h"

namespace kestrove::explore {

struct WorkerProgram {
  std::string program;
  std::string preload;
  std::string library;  // folder of the library, where it is not the program's own
};

// A worker program that serves one process after the other.
class Process {
 public:
  explicit Process(const WorkerProgram& program);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  // A fresh process, standing before the first call.
  void start(int operation);
  // To its next place.
  void go();
  // Where it stands, and waits for its end.
  void kill();
  // Runs an operation through, unseen by anybody; what its first call gave, as an exit status.
  int runThrough(int operation);

  const Report& at() const { return report_; }
  bool over() const { return report_.park == kParkDone || report_.park == kParkEnded; }
  bool holdsStore() const { return !over() && report_.holdsStore; }
  bool holdsSave() const { return !over() && report_.holdsSave; }
  int parks() const { return parks_; }  // passed since the start

 private:
  void hear();
  void awaitEnd();

  int line_ = -1;
  int server_ = -1;
  int parks_ = 0;
  Report report_ = {};
};

}  // namespace kestrove::explore
