// SPDX-License-Identifier: Apache-2.0
// kestrovectl as an operator and a shell wait for it.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "bench/turns.h"

namespace {

constexpr double kMilliseconds = 1e-3;

// Runs a program to its end, its output thrown away.
class Program {
 public:
  explicit Program(std::vector<std::string> words) : words_(std::move(words)) {
    for (std::string& word : words_) arguments_.push_back(word.data());
    arguments_.push_back(nullptr);
    posix_spawn_file_actions_init(&output_);
    posix_spawn_file_actions_addopen(&output_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  }
  ~Program() { posix_spawn_file_actions_destroy(&output_); }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  void run() const {
    pid_t child = 0;
    int status = 0;
    if (posix_spawn(&child, arguments_[0], &output_, nullptr, arguments_.data(), environ) != 0) exit(2);
    if (waitpid(child, &status, 0) != child || status != 0) exit(2);
  }

 private:
  std::vector<std::string> words_;
  std::vector<char*> arguments_;
  posix_spawn_file_actions_t output_;
};

// What a program may take beyond the floor.
bench::Timed andAlso(double seconds, const bench::Timed& floor) {
  return [seconds, floor](int count) { return floor(count) + seconds; };
}

void showAnItem(benchmark::State& state) {
  Program show({KESTROVECTL, "show", "wanLinkRate"});
  Program nothing({BENCH_NOTHING});
  bench::inTurns(state, bench::byClock([&] { show.run(); }),
                 andAlso(1.5 * kMilliseconds, bench::byClock([&] { nothing.run(); })));
}
BENCH_ROW(showAnItem)->Unit(benchmark::kMillisecond);

}  // namespace
