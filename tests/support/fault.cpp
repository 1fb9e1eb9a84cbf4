// SPDX-License-Identifier: Apache-2.0
#include "tests/support/fault.h"

#include <dirent.h>
#include <errno.h>
#include <signal.h>
#include <stddef.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>

#include "kestrove/kestrove.h"

namespace kestrove::testing {
namespace {

#ifdef __x86_64__
constexpr size_t kCallRegister = offsetof(struct user, regs.orig_rax);
constexpr size_t kResultRegister = offsetof(struct user, regs.rax);
#else
constexpr size_t kCallRegister = offsetof(struct user, regs.orig_eax);
constexpr size_t kResultRegister = offsetof(struct user, regs.eax);
#endif

constexpr int kMostCalls = 100000;

// Calls of the allocator and of sanitizers, and those that cannot fail.
bool passed(long call) {
  for (long passedCall : {
           SYS_mmap,
           SYS_munmap,
           SYS_mremap,
           SYS_mprotect,
           SYS_madvise,
           SYS_brk,
           SYS_futex,
           SYS_exit,
           SYS_exit_group,
           SYS_rt_sigreturn,
           SYS_sigaltstack,
#ifdef SYS_mmap2
           SYS_mmap2,
#endif
       }) {
    if (call == passedCall) return true;
  }
  return false;
}

// What child and tracer share.
struct Board {
  volatile bool working;
  volatile bool finished;
  int result;
  unsigned code;
  int leaked;
};

int countDescriptors() {
  DIR* directory = opendir("/proc/self/fd");
  int count = 0;
  while (readdir(directory)) ++count;
  closedir(directory);
  return count;
}

[[noreturn]] void runChild(const Work& work, Board& board) {
  openlog(nullptr, LOG_NDELAY, LOG_USER);
  ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  int before = countDescriptors();
  kill(getpid(), SIGSTOP);
  board.working = true;
  board.result = work();
  board.finished = true;
  board.code = shm_errno;
  board.leaked = countDescriptors() - before;
  _exit(0);
}

class Tracer {
 public:
  Tracer(pid_t child, const Board& board, const Strike& strike) : child_(child), board_(board), strike_(strike) {}

  Aftermath follow() {
    while (waitpid(child_, &status_, 0) == child_ && WIFSTOPPED(status_)) resume();
    after_.status = status_;
    return after_;
  }

 private:
  void resume() {
    int signal = 0;
    if (WSTOPSIG(status_) == (SIGTRAP | 0x80)) {
      atSystemCall();
    } else if (WSTOPSIG(status_) == SIGSTOP && !board_.working) {
      ptrace(PTRACE_SETOPTIONS, child_, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    } else {
      signal = WSTOPSIG(status_);
    }
    ptrace(PTRACE_SYSCALL, child_, nullptr, signal);
  }

  void atSystemCall() {
    __ptrace_syscall_info info = {};
    ptrace(PTRACE_GET_SYSCALL_INFO, child_, sizeof info, &info);
    if (info.op == PTRACE_SYSCALL_INFO_EXIT && failing_) {
      poke(kResultRegister, -strike_.error);
      failing_ = false;
    }
    if (info.op != PTRACE_SYSCALL_INFO_ENTRY || !board_.working || board_.finished) return;
    auto call = static_cast<long>(info.entry.nr);
    if (!passed(call) && ++calls_ == strike_.call) hit(call);
  }

  void hit(long call) {
    after_.struck = true;
    after_.systemCall = call;
    if (strike_.error == kKilled) {
      kill(child_, SIGKILL);
    } else {
      if (call != SYS_close) poke(kCallRegister, -1);  // no such call: the kernel makes none
      failing_ = true;                                 // a close that fails has closed
    }
  }

  void poke(size_t place, long value) { ptrace(PTRACE_POKEUSER, child_, place, value); }

  pid_t child_;
  const Board& board_;
  Strike strike_;
  Aftermath after_;
  int status_ = 0;
  int calls_ = 0;
  bool failing_ = false;
};

}  // namespace

Aftermath strike(const Work& work, const Strike& strike) {
  void* page = mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  auto& board = *new (page) Board{};
  pid_t child = fork();
  if (child == 0) runChild(work, board);
  Aftermath after = Tracer(child, board, strike).follow();
  after.finished = board.finished;
  after.result = board.result;
  after.code = board.code;
  after.leaked = board.leaked;
  munmap(page, sizeof(Board));
  return after;
}

void sweepFaults(const std::vector<int>& errors, const std::function<void()>& prepare, const Work& work,
                 const std::function<void(const Strike&, const Aftermath&)>& check, int stride) {
  for (int error : errors) {
    int call = 1;
    for (; call < kMostCalls; call += stride) {
      prepare();
      Strike blow = {call, error};
      Aftermath after = strike(work, blow);
      if (!after.struck) {
        EXPECT_TRUE(after.finished) << "the work does not end by itself";
        break;
      }
      SCOPED_TRACE(describe(blow, after));
      check(blow, after);
      if (::testing::Test::HasFatalFailure()) return;
    }
    EXPECT_GT(call, 1) << "no system call was struck with " << error;
  }
}

int crashStride(int usual) {
  const char* asked = getenv("KESTROVE_CRASH_STRIDE");
  return asked && atoi(asked) > 0 ? atoi(asked) : usual;
}

std::vector<int> usualFaults() { return {kKilled, EIO, ENOSPC, EMFILE, EINTR}; }

std::string describe(const Strike& strike, const Aftermath& aftermath) {
  std::string blow = strike.error == kKilled ? "SIGKILL" : strerrorname_np(strike.error);
  return blow + " at call " + std::to_string(strike.call) + " (system call " + std::to_string(aftermath.systemCall) +
         ")";
}

}  // namespace kestrove::testing
