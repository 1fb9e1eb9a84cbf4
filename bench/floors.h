// SPDX-License-Identifier: Apache-2.0
// The work that cannot be avoided, done the best way: what each measurement is held against.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>

namespace bench {

// One wait for a file lock and one release, on a lock file of its own.
void lockPair();

// One write of the whole event log into a file of its own, in place.
void writeEventImage();

// The sandbox's shell writes down every line, which the library would pay for each command and a script once: from here
// on the real one stands in its place.
void useTheRealShell();

// Standard output goes nowhere for a scope.
class SilentOutput {
 public:
  SilentOutput();
  ~SilentOutput();
  SilentOutput(const SilentOutput&) = delete;
  SilentOutput& operator=(const SilentOutput&) = delete;

 private:
  int kept_;
};

// Runs work and floor in so many processes at once, each as often as it can, and reports the seconds of all together
// for one run and the runs of the busiest over those of the laziest. All change over at the same moments, every few
// milliseconds, from floor to work and to the floor again.
using Work = std::function<void()>;
void crowd(benchmark::State& state, int processes, const Work& work, const Work& floor);

}  // namespace bench
