// SPDX-License-Identifier: Apache-2.0
// kestrovectl as an operator and a shell wait for it.
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "bench/full_tables.h"
#include "bench/turns.h"
#include "kestrove/kestrove.h"
#include "lifecycle/fresh.h"

namespace {

constexpr double kMilliseconds = 1e-3;
constexpr int kFewRounds = 40;
constexpr char kScript[] = "/usr/local/apache2/htdocs/state-full-size.txt";
constexpr char kConfiguration[] = "/etc/config/kestrove.conf";

// Runs a program to its end, its output thrown away.
class Program {
 public:
  explicit Program(std::vector<std::string> words, int good = 0) : words_(std::move(words)), good_(good) {
    for (std::string& word : words_) arguments_.push_back(word.data());
    arguments_.push_back(nullptr);
    posix_spawn_file_actions_init(&output_);
    posix_spawn_file_actions_addopen(&output_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  }
  ~Program() { posix_spawn_file_actions_destroy(&output_); }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  bool run() const {
    pid_t child = 0;
    int status = 0;
    if (posix_spawn(&child, arguments_[0], &output_, nullptr, arguments_.data(), environ) != 0) return false;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == good_;
  }

 private:
  std::vector<std::string> words_;
  int good_;
  std::vector<char*> arguments_;
  posix_spawn_file_actions_t output_;
};

// Seconds of the program alone: what has to be so before it starts is not counted.
template <typename Before>
bench::Timed timed(benchmark::State& state, const Program& program, Before before) {
  return [&state, &program, before](int count) {
    double seconds = 0;
    for (int i = 0; i < count; ++i) {
      before();
      const double start = bench::secondsOn(CLOCK_MONOTONIC);
      if (!program.run()) state.SkipWithError("the program failed");
      seconds += bench::secondsOn(CLOCK_MONOTONIC) - start;
    }
    return seconds / count;
  };
}

bench::Timed timed(benchmark::State& state, const Program& program) {
  return timed(state, program, [] {});
}

// What a program may take beyond an empty one.
bench::Timed nothingAnd(benchmark::State& state, double seconds) {
  static const Program nothing({BENCH_NOTHING});
  return [floor = timed(state, nothing), seconds](int count) { return floor(count) + seconds; };
}

// A state of full size for a scope, in the file as well: 5 users, 7 addresses, 2048 routes, 8191 rules. Without the
// kernel, which has its own rows: Debug Mode leaves it alone.
class FullSize {
 public:
  FullSize() : config_(shm->config), state_(shm->operationalState) {
    fill();
    if (write_shared_memory() != 0) exit(2);
    shm->operationalState = SHM_STATE_DEBUG;
  }
  ~FullSize() {
    shm->config = config_;
    shm->operationalState = state_;
    empty();
    shm->managementAddressCount = 0;
  }
  FullSize(const FullSize&) = delete;
  FullSize& operator=(const FullSize&) = delete;

  static void fill() {
    bench::fillRoutes();
    bench::fillRules();
    shm->config.userCount = SHM_USERS;
    for (int i = 0; i < SHM_USERS; ++i) {
      UserAccount& user = shm->config.users[i] = {};
      snprintf(user.username, sizeof user.username, "operator%d", i);
      user.superUser = SHM_OFF;
    }
    shm->managementAddressCount = SHM_MANAGEMENT_ADDRESSES;
    for (uint32_t i = 0; i < SHM_MANAGEMENT_ADDRESSES; ++i) {
      shm->managementAddress[i] = {
          SHM_FAMILY_IPV4, SHM_ADDRESS_KEPT, htonl(0xc0a86401 + (i << 8)), htonl(0xffffff00), {}, 0, SHM_IF_BRIDGE};
    }
  }
  static void empty() {
    kestrove::layOutRouteTables();
    kestrove::resetRuleTable();
  }

 private:
  ConfigRecord config_;
  uint32_t state_;
};

void showAnItem(benchmark::State& state) {
  Program show({KESTROVECTL, "show", "wanLinkRate"});
  bench::inTurns(state, timed(state, show), nothingAnd(state, 1.5 * kMilliseconds));
}
BENCH_ROW(showAnItem)->Unit(benchmark::kMillisecond);

void completeARule(benchmark::State& state) {
  FullSize full;
  Program complete({KESTROVECTL, "complete-line"});
  setenv("KESTROVECTL_LINE", "kestrovectl rule delete ", 1);
  bench::inTurns(
      state, timed(state, complete), [](int) { return 20 * kMilliseconds; }, kFewRounds);
  unsetenv("KESTROVECTL_LINE");
}
BENCH_ROW(completeARule)->Unit(benchmark::kMillisecond);

// Every hundredth rule is another one than in the file.
void compareWithTheFile(benchmark::State& state) {
  FullSize full;
  for (int i = 0; i < SHM_RULES - 1; i += 100) shm->filterTable.rule[i].bandwidth += 1000;
  Program diff({KESTROVECTL, "diff"}, 4);
  bench::inTurns(
      state, timed(state, diff), [](int) { return 100 * kMilliseconds; }, kFewRounds);
}
BENCH_ROW(compareWithTheFile)->Unit(benchmark::kMillisecond);

// Both on tables that were emptied: the script as a save of the state writes it, and the configuration file.
void applyAScript(benchmark::State& state) {
  FullSize full;
  if (__saveCliState("full-size") != 0) return state.SkipWithError("no script");
  Program apply({KESTROVECTL, "apply", "--replace", kScript});
  Program load({KESTROVECTL, "load", kConfiguration});
  bench::inTurns(state, timed(state, apply, FullSize::empty), timed(state, load, FullSize::empty), kFewRounds);
  if (shm->filterTable.ruleCount != SHM_RULES) state.SkipWithError("rules are missing");
}
BENCH_ROW(applyAScript)->Unit(benchmark::kMillisecond);

}  // namespace
