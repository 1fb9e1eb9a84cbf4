// Work and floor in turns, so that both meet the same machine.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>

namespace bench {

template <typename Piece>
double secondsOf(Piece piece) {
  auto start = std::chrono::steady_clock::now();
  piece();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// For a benchmark with manual time: each round does the work once and the floor once. The floor's time for one round
// becomes the counter "floor".
template <typename Work, typename Floor>
void inTurns(benchmark::State& state, Work work, Floor floor) {
  double floorSeconds = 0;
  for (auto _ : state) {
    floorSeconds += secondsOf(floor);
    state.SetIterationTime(secondsOf(work));
  }
  state.counters["floor"] = benchmark::Counter(floorSeconds, benchmark::Counter::kAvgIterations);
}

}  // namespace bench
