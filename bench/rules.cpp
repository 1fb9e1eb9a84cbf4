// SPDX-License-Identifier: Apache-2.0
// The rule table, beside the lock pair and the one move of memory that an edit cannot do without.
#include <benchmark/benchmark.h>
#include <string.h>

#include "bench/floors.h"
#include "bench/full_tables.h"
#include "bench/turns.h"
#include "kestrove/kestrove.h"

namespace {

using bench::byProcessor;
using bench::lockPair;

constexpr int kRules = SHM_RULES - 1;

FilterRule* rules() { return shm->filterTable.rule; }

void fill() {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  bench::fillRules(kRules);
}

void leave() { shm->operationalState = SHM_STATE_OPERATIONAL; }

void ruleEntry(benchmark::State& state) {
  fill();
  FilterRule out;
  int position = 0;
  auto read = [&] {
    if (getRuleTableEntry(position, &out) != 0) state.SkipWithError("no rule");
    benchmark::DoNotOptimize(out);
    position = (position + 1) % kRules;
  };
  bench::inTurns(state, byProcessor(read), byProcessor(lockPair));
  leave();
}
BENCH_ROW(ruleEntry);

// The bytes that an operation moves, the way it moves them.
struct Move {
  int from;
  int to;
  int count;
  void operator()() const {
    lockPair();
    memmove(rules() + to, rules() + from, static_cast<size_t>(count) * sizeof(FilterRule));
    benchmark::ClobberMemory();
  }
};

template <typename Edit>
void edit(benchmark::State& state, Edit operation, Move floor) {
  fill();
  auto work = [&state, &operation] {
    if (operation() != 0) state.SkipWithError("refused");
    shm->filterTable.ruleCount = kRules;
  };
  bench::inTurns(state, byProcessor(work), byProcessor(floor));
  leave();
}

void ruleInsert(benchmark::State& state) {
  FilterRule rule = {};
  edit(state, [&] { return insertRule(0, &rule); }, {0, 1, kRules});
}
BENCH_ROW(ruleInsert);

void ruleDelete(benchmark::State& state) {
  edit(state, [] { return deleteRule(0); }, {1, 0, kRules - 1});
}
BENCH_ROW(ruleDelete);

void ruleMove(benchmark::State& state) {
  edit(state, [] { return moveRule(0, kRules - 1); }, {1, 0, kRules - 2});
}
BENCH_ROW(ruleMove);

}  // namespace
