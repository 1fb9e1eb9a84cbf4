// The rule table, beside the lock pair and the one move of memory that an edit cannot do without.
#include <benchmark/benchmark.h>
#include <string.h>

#include "bench/floors.h"
#include "kestrove/kestrove.h"

namespace {

using bench::lockPair;

constexpr int kRules = SHM_RULES - 1;

FilterRule* rules() { return shm->filterTable.rule; }

void fill() {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  for (int i = 0; i < kRules; ++i) rules()[i] = {4, 0, 0, 0, 0, {}, 0, {}, 0, 6, i, i, 0, 0, 1, 0, 8, 50000, 1, 3};
  shm->filterTable.ruleCount = kRules;
}

void leave() { shm->operationalState = SHM_STATE_OPERATIONAL; }

void floorRuleEntry(benchmark::State& state) {
  for (auto _ : state) lockPair();
}
BENCHMARK(floorRuleEntry);

void ruleEntry(benchmark::State& state) {
  fill();
  FilterRule out;
  int position = 0;
  for (auto _ : state) {
    if (getRuleTableEntry(position, &out) != 0) state.SkipWithError("no rule");
    benchmark::DoNotOptimize(out);
    position = (position + 1) % kRules;
  }
  leave();
}
BENCHMARK(ruleEntry);

// The bytes that the operation of that name moves, the way it moves them.
void floorOfMove(benchmark::State& state, int from, int to, int count) {
  fill();
  for (auto _ : state) {
    lockPair();
    memmove(rules() + to, rules() + from, static_cast<size_t>(count) * sizeof(FilterRule));
    benchmark::ClobberMemory();
  }
  leave();
}

void floorRuleInsert(benchmark::State& state) { floorOfMove(state, 0, 1, kRules); }
void floorRuleDelete(benchmark::State& state) { floorOfMove(state, 1, 0, kRules - 1); }
void floorRuleMove(benchmark::State& state) { floorOfMove(state, 1, 0, kRules - 2); }
BENCHMARK(floorRuleInsert);

template <typename Edit>
void edit(benchmark::State& state, Edit operation) {
  fill();
  for (auto _ : state) {
    if (operation() != 0) state.SkipWithError("refused");
    shm->filterTable.ruleCount = kRules;
  }
  leave();
}

void ruleInsert(benchmark::State& state) {
  FilterRule rule = {};
  edit(state, [&] { return insertRule(0, &rule); });
}
BENCHMARK(ruleInsert);

void ruleDelete(benchmark::State& state) {
  edit(state, [] { return deleteRule(0); });
}
BENCHMARK(floorRuleDelete);
BENCHMARK(ruleDelete);

void ruleMove(benchmark::State& state) {
  edit(state, [] { return moveRule(0, kRules - 1); });
}
BENCHMARK(floorRuleMove);
BENCHMARK(ruleMove);

}  // namespace
