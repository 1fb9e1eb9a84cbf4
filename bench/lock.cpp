// SPDX-License-Identifier: Apache-2.0
// Item-sized reads under the store lock, alone and among other processes.
#include <benchmark/benchmark.h>

#include "bench/floors.h"
#include "bench/turns.h"
#include "kestrove/kestrove.h"

namespace {

void readWord() {
  uint32_t product;
  getKestroveProduct(&product);
  benchmark::DoNotOptimize(product);
}

void lockedRead(benchmark::State& state) {
  bench::inTurns(state, bench::byProcessor(readWord), bench::byProcessor(bench::lockPair));
}
BENCH_ROW(lockedRead);

void lockedReadAmong(benchmark::State& state) {
  bench::crowd(state, static_cast<int>(state.range(0)), readWord, bench::lockPair);
}
BENCH_ROW(lockedReadAmong)->Arg(2)->Arg(4);

}  // namespace
