// Items and the hand-off, each beside its floor.
#include <benchmark/benchmark.h>
#include <stdio.h>
#include <string.h>

#include <memory>

#include "bench/floors.h"
#include "kestrove/kestrove.h"

namespace {

using bench::lockPair;

void floorItem(benchmark::State& state) {
  for (auto _ : state) lockPair();
}
BENCHMARK(floorItem);

void getItem(benchmark::State& state) {
  uint32_t value;
  for (auto _ : state) getKestroveConfigItem(static_cast<int>(state.range(0)), &value);
}
BENCHMARK(getItem)->Arg(1)->Arg(58);

void setItemInConfigurationMode(benchmark::State& state) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  uint32_t rate = 10000;
  for (auto _ : state) setKestroveConfigItem(1, rate ^= 1, 0, "--");
  shm->operationalState = SHM_STATE_OPERATIONAL;
}
BENCHMARK(setItemInConfigurationMode);

void fillRules() {
  shm->filterTable.ruleCount = SHM_RULES;
  for (FilterRule& rule : shm->filterTable.rule) {
    rule.ruleAction = 3;
    rule.target = 1;
  }
}

char* appendText(char* end, const char* text, size_t length) {
  memcpy(end, text, length);
  return end + length;
}

// The same lines, written by hand.
void printLines() {
  constexpr char kHead[] = "shm->filterTable.rule[rule].ruleAction: ";
  constexpr char kTail[] = " ACTIVE: 3\n";
  static char lines[SHM_RULES * 64];
  char* end = lines;
  for (const FilterRule& rule : shm->filterTable.rule) {
    end = appendText(end, kHead, sizeof kHead - 1);
    *end++ = static_cast<char>('0' + rule.ruleAction);
    end = appendText(end, kTail, sizeof kTail - 1);
  }
  fwrite(lines, 1, static_cast<size_t>(end - lines), stdout);
}

void floorSnapshot(benchmark::State& state) {
  fillRules();
  auto block = std::make_unique<EngineConfiguration>();
  bench::SilentOutput silence;
  for (auto _ : state) {
    lockPair();
    memset(block.get(), 0, sizeof *block);
    memcpy(block->rule, shm->filterTable.rule, sizeof block->rule);
    printLines();
    benchmark::ClobberMemory();
  }
}
BENCHMARK(floorSnapshot);

void snapshot(benchmark::State& state) {
  fillRules();
  auto block = std::make_unique<EngineConfiguration>();
  bench::SilentOutput silence;
  for (auto _ : state) setConfiguration(block.get());
}
BENCHMARK(snapshot);

void readItem() {
  uint32_t value;
  getKestroveConfigItem(1, &value);
  benchmark::DoNotOptimize(value);
}

void getItemAmong(benchmark::State& state) {
  for (auto _ : state) {
    bench::Crowd crowd = bench::crowd(static_cast<int>(state.range(0)), readItem, lockPair);
    state.SetIterationTime(crowd.secondsPerRun);
    state.counters["floor"] = crowd.floorSecondsPerRun;
    state.counters["fairness"] = crowd.fairness;
  }
}
BENCHMARK(getItemAmong)->Arg(64)->UseManualTime()->Iterations(1);

void floorSetWithSave(benchmark::State& state) {
  fillRules();
  for (auto _ : state) save_shared_memory();
}
BENCHMARK(floorSetWithSave);

void setWithSave(benchmark::State& state) {
  fillRules();
  uint32_t flag = 0;
  for (auto _ : state) setKestroveConfigItem(55, flag ^= 1, 0, "--");
}
BENCHMARK(setWithSave);

}  // namespace
