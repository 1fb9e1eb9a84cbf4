// SPDX-License-Identifier: Apache-2.0
// explore: runs operations of two and three processes in every order and holds the ends against the serial orders.
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string_view>

#include "tests/explore/judge.h"
#include "tests/explore/operations.h"
#include "tests/explore/plan.h"

namespace kestrove::explore {
namespace {

constexpr int kEngineTask = 4;
constexpr char kInsideMark[] = "/run/kestrove/inside";

constexpr char kUsage[] =
    "usage: explore WORKER PARK [OTHER-WORKER OTHER-PARK] [OPTION...] COMMAND\n"
    "  whole           every pair with every kill, and the most used operations in threes\n"
    "  share           a part of it that has every operation\n"
    "  try A B [C]     these operations\n"
    "  pairs A B [A B] these pairs, without kills\n"
    "  find A B [A B]  these pairs; succeeds when one of them has an order that is not serial\n"
    "  --library DIR   with the library in that folder\n"
    "  --part N/M      one of M equal parts\n";

struct Arguments {
  std::vector<std::string> programs;
  std::string library;
  std::string command;
  std::vector<std::string> names;
  Part part;
};

[[noreturn]] void refuse() {
  fputs(kUsage, stderr);
  exit(2);
}

bool isCommand(std::string_view word) {
  return word == "whole" || word == "share" || word == "try" || word == "pairs" || word == "find";
}

void readOption(Arguments& arguments, std::string_view word, const char* value) {
  if (!value) refuse();
  if (word == "--library") {
    arguments.library = value;
  } else if (word != "--part" || sscanf(value, "%u/%u", &arguments.part.number, &arguments.part.of) != 2) {
    refuse();
  }
}

Arguments readArguments(char** word) {
  Arguments arguments;
  for (; *word; ++word) {
    if (strncmp(*word, "--", 2) == 0) {
      readOption(arguments, word[0], word[1]);
      ++word;
    } else if (!arguments.command.empty()) {
      arguments.names.push_back(*word);
    } else {
      (isCommand(*word) ? arguments.command : arguments.programs.emplace_back()) = *word;
    }
  }
  bool programs = arguments.programs.size() == 2 || arguments.programs.size() == 4;
  if (!programs || arguments.command.empty() || arguments.part.of == 0) refuse();
  return arguments;
}

// Hears the signals of changed settings.
pid_t startEngine() {
  pid_t engine = fork();
  if (engine != 0) return engine;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  signal(SIGUSR1, SIG_IGN);
  for (;;) pause();
}

void setUpStore(const Arguments& arguments, World& world) {
  pid_t child = fork();
  if (child == 0) {
    if (!arguments.library.empty()) setenv("LD_LIBRARY_PATH", arguments.library.c_str(), 1);
    execl(arguments.programs[0].c_str(), "explore-worker", "setup", nullptr);
    _exit(2);
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child || status != 0 || !world.store().attach()) {
    fputs("explore: the starting store could not be made\n", stderr);
    exit(2);
  }
  world.store().data().taskPids[kEngineTask] = startEngine();
  world.keep();
}

// The first of this build's width, the second of the other one, where there is one.
std::vector<std::unique_ptr<Process>> startWorkers(const Arguments& arguments) {
  std::vector<std::unique_ptr<Process>> processes;
  for (size_t i = 0; i < 3; ++i) {
    size_t at = arguments.programs.size() == 4 && i == 1 ? 2 : 0;
    std::string library = at == 0 ? arguments.library : "";
    processes.push_back(
        std::make_unique<Process>(WorkerProgram{arguments.programs[at], arguments.programs[at + 1], library}));
  }
  return processes;
}

std::vector<Listed> listOperations() {
  std::vector<Listed> list;
  for (const Operation& operation : operations()) {
    int calls = 0;
    while (calls < kMostCalls && operation.call[calls]) ++calls;
    list.push_back({operation.name, operation.flags, calls});
  }
  return list;
}

double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

int explore(const Arguments& arguments) {
  World world;
  setUpStore(arguments, world);
  auto processes = startWorkers(arguments);
  Search search(world, processes, listOperations());
  Judge judge(search);
  auto start = std::chrono::steady_clock::now();
  bool good = runPlan(search, judge, arguments.command, arguments.names, arguments.part);
  double seconds = secondsSince(start);
  printf(
      "explored: %zu operations, %llu combinations, %llu orders (%llu with a kill), %llu findings, %.1f s, %.0f a "
      "second\n",
      search.operations(), static_cast<unsigned long long>(judge.combinations()),
      static_cast<unsigned long long>(judge.orders()), static_cast<unsigned long long>(judge.kills()),
      static_cast<unsigned long long>(judge.findings()), seconds, static_cast<double>(search.schedules()) / seconds);
  return good ? 0 : 1;
}

}  // namespace
}  // namespace kestrove::explore

int main(int, char** argv) {
  using namespace kestrove::explore;
  setvbuf(stdout, nullptr, _IOLBF, 0);
  Arguments arguments = readArguments(argv + 1);
  if (access(kInsideMark, F_OK) == 0) return explore(arguments);
  fputs("explore: runs only inside the sandbox\n", stderr);
  return 2;
}
