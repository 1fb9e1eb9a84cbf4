// Item-sized reads under the store lock, alone and among other processes.
#include <benchmark/benchmark.h>

#include "bench/floors.h"
#include "kestrove/kestrove.h"

namespace {

void readWord() {
  uint32_t product;
  getKestroveProduct(&product);
  benchmark::DoNotOptimize(product);
}

void lockedRead(benchmark::State& state) {
  for (auto _ : state) readWord();
}

void floorLockedRead(benchmark::State& state) {
  for (auto _ : state) bench::lockPair();
}

BENCHMARK(floorLockedRead);
BENCHMARK(lockedRead);

void lockedReadAmong(benchmark::State& state) {
  for (auto _ : state) {
    bench::Crowd crowd = bench::crowd(static_cast<int>(state.range(0)), readWord, bench::lockPair);
    state.SetIterationTime(crowd.secondsPerRun);
    state.counters["floor"] = crowd.floorSecondsPerRun;
    state.counters["fairness"] = crowd.fairness;
  }
}
BENCHMARK(lockedReadAmong)->Arg(2)->Arg(4)->UseManualTime()->Iterations(1);

}  // namespace
