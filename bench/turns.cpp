// SPDX-License-Identifier: Apache-2.0
#include "bench/turns.h"

#include <algorithm>
#include <vector>

namespace bench {
namespace {

constexpr double kTurn = 0.0002;  // seconds that a turn takes at least
constexpr double kWhile = 0.15;
constexpr int kLeastRounds = 5;

double middle(std::vector<double>& values) {
  auto place = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), place, values.end());
  return *place;
}

// How often in a row, so that neither asking for the time nor changing over is felt.
int lengthOfTurn(const Timed& floor) {
  floor(1);
  double seconds = std::max(floor(1), 1e-9);
  return seconds >= kTurn ? 1 : static_cast<int>(kTurn / seconds) + 1;
}

class Rounds {
 public:
  void add(double work, double floor, double again) {
    double both = (floor + again) / 2;
    work_.push_back(work);
    floor_.push_back(both);
    ratio_.push_back(work / both);
    self_.push_back(again / floor);
  }
  int count() const { return static_cast<int>(work_.size()); }
  void report(benchmark::State& state) {
    state.SetIterationTime(middle(work_));
    state.counters["floor"] = middle(floor_);
    state.counters["ratio"] = middle(ratio_);
    state.counters["self"] = middle(self_);
  }

 private:
  std::vector<double> work_, floor_, ratio_, self_;
};

}  // namespace

void inTurns(benchmark::State& state, const Timed& work, const Timed& floor, int most) {
  for (auto _ : state) {
    int count = most == kAnyRounds ? lengthOfTurn(floor) : 1;
    Rounds rounds;
    double end = secondsOn(CLOCK_MONOTONIC) + kWhile;
    while (rounds.count() < most && (rounds.count() < kLeastRounds || secondsOn(CLOCK_MONOTONIC) < end)) {
      double before = floor(count), between = work(count);
      rounds.add(between, before, floor(count));
    }
    rounds.report(state);
  }
}

}  // namespace bench
