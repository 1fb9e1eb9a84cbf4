// The work that cannot be avoided, done the best way: what each measurement is held against.
#pragma once

#include <functional>

namespace bench {

// One wait for a file lock and one release, on a lock file of its own.
void lockPair();

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

// What several processes did in the same stretch of time.
struct Crowd {
  double secondsPerRun;       // of all together
  double floorSecondsPerRun;  // of the floor, which took turns with the work
  double fairness;            // runs of the busiest over those of the laziest
};

// Runs work and floor in so many processes at once, each as often as it can. All change over at the same moments, every
// few milliseconds, so that both meet the same machine.
Crowd crowd(int processes, const std::function<void()>& work, const std::function<void()>& floor);

}  // namespace bench
