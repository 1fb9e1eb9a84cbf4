// SPDX-License-Identifier: Apache-2.0
// Every order of the places at which processes stand still.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/explore/process.h"
#include "tests/explore/world.h"

namespace kestrove::explore {

struct Listed {  // an operation, as a worker names it
  std::string name;
  unsigned flags;
  int calls;
};

// Somebody who is killed at one of its places; nobody when the process is negative.
struct Victim {
  int process = -1;
  int park = 0;
};

// One operation for each process.
using Combination = std::vector<int>;

struct Ending {
  Outcome outcome;
  std::string schedule;
  bool killed = false;
  bool stuck = false;  // nobody can go on, or a program waits for the lock that its starter holds
};

class Search {
 public:
  Search(World& world, std::vector<std::unique_ptr<Process>>& processes, std::vector<Listed> operations);

  // The places of an operation that runs alone.
  const std::vector<int>& trace(int process, int operation);

  // Visits the ending of every order; of the serial ones, in which a process goes on until a call returns or it must
  // wait, or of all with at most that many preemptions. A visitor that is satisfied ends the search by false.
  enum class Orders { kSerial, kAll };
  using Visitor = std::function<bool(const Ending&)>;
  void visit(const Combination& combination, Orders orders, Victim victim, const Visitor& visitor);

  // For orders of many steps; three at first.
  void mostPreemptions(int most) { mostPreemptions_ = most; }
  void describe(bool inWords) { inWords_ = inWords; }
  const Listed& operation(int number) const { return operations_[static_cast<size_t>(number)]; }
  size_t operations() const { return operations_.size(); }
  uint64_t schedules() const { return schedules_; }

 private:
  struct Step {
    std::vector<int> options;  // processes; the one that ran last goes first when it can go on
    size_t taken = 0;
    int preemptions = 0;  // before this step
    bool mayGoOn = false;
  };

  void begin(const Combination& combination, Victim victim);
  Ending run(std::vector<Step>& path);
  bool advance(Step& step);
  Step nextStep() const;
  std::vector<int> runnable() const;
  bool canGo(size_t process) const;
  bool lockFree(size_t process, bool (Process::*holds)() const) const;
  bool atBoundary(int process) const;
  bool atVictim(size_t process) const;
  void move(size_t process);
  bool finished() const;
  Ending end(bool stuck);
  bool backtrack(std::vector<Step>& path) const;
  int bound() const;
  bool any(unsigned flag) const;
  std::string resultsText() const;

  World& world_;
  std::vector<std::unique_ptr<Process>>& processes_;
  std::vector<Listed> operations_;
  std::map<std::pair<int, int>, std::vector<int>> traces_;
  Combination combination_;
  Victim victim_;
  Orders orders_ = Orders::kAll;
  std::vector<bool> firstLocks_;  // whose first place is the store's lock
  std::vector<bool> tried_;       // and found the lock taken, with nobody moving since
  int last_ = -1;
  int steps_ = 0;
  std::string schedule_;
  bool killed_ = false;
  bool inWords_ = false;
  int mostPreemptions_ = 3;
  uint64_t schedules_ = 0;
};

}  // namespace kestrove::explore
