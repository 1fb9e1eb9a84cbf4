// SPDX-License-Identifier: Apache-2.0
// Work and floor in turns, so that both meet the same machine.
#pragma once

#include <benchmark/benchmark.h>
#include <time.h>

#include <functional>

// A row of the table, measured by a function that calls inTurns() once.
#define BENCH_ROW(function) BENCHMARK(function)->UseManualTime()->Iterations(1)

namespace bench {

// Does something so often in a row and tells the seconds that one time took.
using Timed = std::function<double(int count)>;

inline double secondsOn(clockid_t clock) {
  timespec time;
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

template <typename Piece>
Timed timedOn(clockid_t clock, Piece piece) {
  return [clock, piece](int count) {
    double start = secondsOn(clock);
    for (int i = 0; i < count; ++i) piece();
    return (secondsOn(clock) - start) / count;
  };
}

// Processor time of this process, which others of the machine hardly lengthen.
template <typename Piece>
Timed byProcessor(Piece piece) {
  return timedOn(CLOCK_PROCESS_CPUTIME_ID, piece);
}

// Time of the clock, for what other processes do.
template <typename Piece>
Timed byClock(Piece piece) {
  return timedOn(CLOCK_MONOTONIC, piece);
}

constexpr int kAnyRounds = 1 << 20;

// Rounds of floor, work and the floor again, for a while, at most so many. The middle of the rounds is reported: the
// work's time, the floor's, the ratio of both within a round, and that of the floor to itself.
void inTurns(benchmark::State& state, const Timed& work, const Timed& floor, int most = kAnyRounds);

}  // namespace bench
