// SPDX-License-Identifier: Apache-2.0
// Items and the hand-off, each beside its floor.
#include <benchmark/benchmark.h>
#include <stdio.h>
#include <string.h>

#include <memory>

#include "bench/floors.h"
#include "bench/full_tables.h"
#include "bench/turns.h"
#include "kestrove/kestrove.h"

namespace {

using bench::byProcessor;
using bench::lockPair;

void getItem(benchmark::State& state) {
  auto id = static_cast<int>(state.range(0));
  auto read = [id] {
    uint32_t value;
    getKestroveConfigItem(id, &value);
    benchmark::DoNotOptimize(value);
  };
  bench::inTurns(state, byProcessor(read), byProcessor(lockPair));
}
BENCH_ROW(getItem)->Arg(1)->Arg(58);

void setItemInConfigurationMode(benchmark::State& state) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  uint32_t rate = 10000;
  auto set = [&rate] { setKestroveConfigItem(1, rate ^= 1, 0, "--"); };
  bench::inTurns(state, byProcessor(set), byProcessor(lockPair));
  shm->operationalState = SHM_STATE_OPERATIONAL;
}
BENCH_ROW(setItemInConfigurationMode);

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

void copyByHand(EngineConfiguration& block) {
  lockPair();
  memset(static_cast<void*>(&block), 0, sizeof block);
  memcpy(block.rule, shm->filterTable.rule, sizeof block.rule);
  printLines();
  benchmark::ClobberMemory();
}

void snapshot(benchmark::State& state) {
  bench::fillRules();
  auto block = std::make_unique<EngineConfiguration>();
  bench::SilentOutput silence;
  auto work = [&block] { setConfiguration(block.get()); };
  bench::inTurns(state, byProcessor(work), byProcessor([&block] { copyByHand(*block); }));
}
BENCH_ROW(snapshot);

void readItem() {
  uint32_t value;
  getKestroveConfigItem(1, &value);
  benchmark::DoNotOptimize(value);
}

void getItemAmong(benchmark::State& state) {
  bench::crowd(state, static_cast<int>(state.range(0)), readItem, lockPair);
}
BENCH_ROW(getItemAmong)->Arg(64);

void setWithSave(benchmark::State& state) {
  bench::fillRules();
  uint32_t flag = 0;
  auto set = [&flag] { setKestroveConfigItem(55, flag ^= 1, 0, "--"); };
  bench::inTurns(state, byProcessor(set), byProcessor(save_shared_memory));
}
BENCH_ROW(setWithSave);

// Item 11 logs an event and saves, and the engine hears nothing of it.
void setWithEvent(benchmark::State& state) {
  bench::fillRules();
  uint32_t value = SHM_ON;
  auto set = [&value] { setKestroveConfigItem(11, value ^= SHM_ON ^ SHM_OFF, 0, "--"); };
  auto floor = [] {
    bench::writeEventImage();
    save_shared_memory();
    lockPair();
  };
  bench::inTurns(state, byProcessor(set), byProcessor(floor));
}
BENCH_ROW(setWithEvent);

}  // namespace
