// SPDX-License-Identifier: Apache-2.0
#include "bench/floors.h"

#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <numeric>

#include "bench/turns.h"
#include "kestrove/kestrove.h"

namespace bench {
namespace {

constexpr char kLockFile[] = "/var/lock/bench";
constexpr char kEventFile[] = "/var/log/kestrove/floor.log";
constexpr double kTurn = 0.01;  // seconds
constexpr int kTurns = 150;

int openLock() {
  int fd = open(kLockFile, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (fd == -1) exit(2);
  return fd;
}

double now() { return secondsOn(CLOCK_MONOTONIC); }

constexpr int kMostProcesses = 64;

struct Board {
  int ready;
  double begin;  // 0 until all are ready
  uint32_t runs[kTurns][kMostProcesses];
};

// Floor, work, and the floor again.
bool isWork(int turn) { return turn % 3 == 1; }

Board* sharedBoard() {
  void* memory = mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) exit(2);
  return static_cast<Board*>(memory);
}

double awaitBegin(Board& board) {
  __atomic_add_fetch(&board.ready, 1, __ATOMIC_SEQ_CST);
  double begin;
  do {
    usleep(100);
    __atomic_load(&board.begin, &begin, __ATOMIC_SEQ_CST);
  } while (begin == 0);
  return begin;
}

[[noreturn]] void runAsOneOf(Board& board, int number, const Work& work, const Work& floor) {
  work();  // opens and attaches what it needs
  floor();
  double begin = awaitBegin(board);
  for (int turn; (turn = static_cast<int>((now() - begin) / kTurn)) < kTurns;) {
    for (int i = 0; i < 16; ++i) (isWork(turn) ? work : floor)();
    board.runs[turn][number] += 16;
  }
  _exit(0);
}

double secondsPerRun(const uint32_t (&runs)[kMostProcesses]) {
  return kTurn / std::max(std::accumulate(runs, runs + kMostProcesses, 0u), 1u);
}

double fairness(const Board& board, int processes) {
  uint64_t sum[kMostProcesses] = {};
  for (int turn = 0; turn < kTurns; ++turn) {
    for (int i = 0; isWork(turn) && i < processes; ++i) sum[i] += board.runs[turn][i];
  }
  auto [least, most] = std::minmax_element(sum, sum + processes);
  return static_cast<double>(*most) / static_cast<double>(*least);
}

}  // namespace

void lockPair() {
  static const int fd = openLock();
  struct flock request = {};
  request.l_whence = SEEK_SET;
  request.l_type = F_WRLCK;
  fcntl(fd, F_SETLKW, &request);
  request.l_type = F_UNLCK;
  fcntl(fd, F_SETLK, &request);
}

void writeEventImage() {
  int fd = open(kEventFile, O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
  ssize_t written = write(fd, &shm->eventLog, sizeof shm->eventLog);
  if (written != static_cast<ssize_t>(sizeof shm->eventLog)) exit(2);
  close(fd);
}

void useTheRealShell() {
  static const bool covered = mount("/run/kestrove/real/sh", "/bin/sh", nullptr, MS_BIND, nullptr) == 0;
  if (!covered) exit(2);
}

SilentOutput::SilentOutput() {
  fflush(stdout);
  kept_ = dup(STDOUT_FILENO);
  int nothing = open("/dev/null", O_WRONLY);
  dup2(nothing, STDOUT_FILENO);
  close(nothing);
}

SilentOutput::~SilentOutput() {
  fflush(stdout);
  dup2(kept_, STDOUT_FILENO);
  close(kept_);
}

void crowd(benchmark::State& state, int processes, const Work& work, const Work& floor) {
  Board* board = sharedBoard();
  for (int i = 0; i < processes; ++i) {
    if (fork() == 0) runAsOneOf(*board, i, work, floor);
  }
  while (__atomic_load_n(&board->ready, __ATOMIC_SEQ_CST) < processes) usleep(100);
  double begin = now();
  __atomic_store(&board->begin, &begin, __ATOMIC_SEQ_CST);
  while (wait(nullptr) > 0) continue;
  state.counters["fairness"] = fairness(*board, processes);
  int turn = 0;
  auto next = [board, &turn](int) { return secondsPerRun(board->runs[turn++]); };
  inTurns(state, next, next, kTurns / 3);
  munmap(board, sizeof *board);
}

}  // namespace bench
