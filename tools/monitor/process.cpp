// SPDX-License-Identifier: Apache-2.0
#include "tools/monitor/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "tools/common/lock_wait.h"
#include "tools/common/process_time.h"

namespace monitor {
namespace {

constexpr int kCannotStart = 127;

// The header of the C library has no C linkage for C++ in the oldest version that has it.
int openProcess(int pid) { return static_cast<int>(syscall(SYS_pidfd_open, pid, 0U)); }

// Nothing of the monitor's own reaches a task: neither descriptors nor what became of its signals.
void forgetOwnWays() {
  setsid();
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  for (int number : {SIGPIPE, SIGALRM, SIGINT, SIGTERM}) signal(number, SIG_DFL);
  const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
  if (nothing != -1) dup2(nothing, STDIN_FILENO);
  close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
}

[[noreturn]] void become(const std::vector<std::string>& words) {
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  forgetOwnWays();
  execv(arguments[0], arguments.data());
  _exit(kCannotStart);
}

}  // namespace

Process Process::start(const std::vector<std::string>& words) {
  const pid_t child = fork();
  if (child == 0) become(words);
  return born(child);
}

Process Process::call(int (*work)(), int words) {
  const pid_t child = fork();
  if (child != 0) return born(child);
  forgetOwnWays();
  for (int out : {STDOUT_FILENO, STDERR_FILENO}) dup2(words, out);
  _exit(work());
}

// One that cannot be watched is none.
Process Process::born(int child) {
  Process process;
  if (child == -1) return process;
  process.descriptor_ = kestrove::sys::Descriptor(openProcess(child));
  process.pid_ = child;
  process.child_ = true;
  process.since_ = tools::startTimeOf(child);
  if (process) return process;
  const int error = errno;
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  errno = error;
  return process;
}

// The descriptor first: what is asked afterwards is asked of the process that it stays with, or of none.
Process Process::adopt(int pid, unsigned long long since) {
  Process process;
  if (pid < 2 || pid == getpid()) return process;
  process.descriptor_ = kestrove::sys::Descriptor(openProcess(pid));
  process.pid_ = pid;
  process.since_ = tools::startTimeOf(pid);
  if (!process || process.since_ == 0 || (since != 0 && since != process.since_) || process.ended()) return {};
  return process;
}

std::string Process::name() const { return tools::holderOf(pid_).name; }

void Process::signal(int number) const { syscall(SYS_pidfd_send_signal, descriptor_.get(), number, nullptr, 0U); }

bool Process::ended() {
  struct pollfd end = {descriptor_.get(), POLLIN, 0};
  if (poll(&end, 1, 0) != 1) return false;
  if (child_ && waitpid(pid_, &status_, WNOHANG) == pid_) child_ = false;
  return true;
}

std::string Process::ending() const {
  if (status_ == -1) return "no status";
  if (WIFSIGNALED(status_)) return "signal " + std::to_string(WTERMSIG(status_));
  return "exit status " + std::to_string(WEXITSTATUS(status_));
}

}  // namespace monitor
