// SPDX-License-Identifier: Apache-2.0
#include "tests/support/single_step.h"

#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

namespace kestrove::testing {
namespace {

// What child and tracer share.
struct Board {
  volatile bool finished;
};

[[noreturn]] void runChild(const std::function<void()>& work, Board& board) {
  openlog(nullptr, LOG_NDELAY, LOG_USER);
  ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  kill(getpid(), SIGSTOP);
  work();
  board.finished = true;
  _exit(0);
}

// Child and tracer take turns: on one processor they need not wake another one for each instruction.
class OneProcessor {
 public:
  OneProcessor() {
    sched_getaffinity(0, sizeof before_, &before_);
    cpu_set_t here;
    CPU_ZERO(&here);
    CPU_SET(static_cast<size_t>(sched_getcpu()), &here);
    sched_setaffinity(0, sizeof here, &here);
  }
  ~OneProcessor() { sched_setaffinity(0, sizeof before_, &before_); }
  OneProcessor(const OneProcessor&) = delete;
  OneProcessor& operator=(const OneProcessor&) = delete;

 private:
  cpu_set_t before_;
};

bool stopped(pid_t child, int& status) { return waitpid(child, &status, 0) == child && WIFSTOPPED(status); }

// A stop of our own making hands the child no signal.
int signalOf(int status) {
  int signal = WSTOPSIG(status);
  return signal == SIGTRAP || signal == SIGSTOP ? 0 : signal;
}

void end(pid_t child) {
  kill(child, SIGKILL);
  for (int status; waitpid(child, &status, 0) == child && WIFSTOPPED(status);) continue;
}

}  // namespace

Steps singleStep(const std::function<void()>& work, const std::function<bool()>& look) {
  void* page = mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  auto& board = *new (page) Board{};
  OneProcessor turns;
  Steps steps;
  pid_t child = fork();
  if (child == 0) runChild(work, board);
  for (int status; stopped(child, status) && !board.finished; ++steps.count) {
    if (!look()) break;
    ptrace(PTRACE_SINGLESTEP, child, nullptr, signalOf(status));
  }
  steps.finished = board.finished;
  end(child);
  munmap(page, sizeof(Board));
  return steps;
}

}  // namespace kestrove::testing
