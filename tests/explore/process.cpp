// SPDX-License-Identifier: Apache-2.0
#include "tests/explore/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrove::explore {
namespace {

constexpr int kWorkerLine = 3;
constexpr int kLongestStep = 30000;  // milliseconds; no order depends on it

[[noreturn]] void giveUp(const char* what) {
  perror(what);
  exit(2);
}

[[noreturn]] void become(const WorkerProgram& worker, int line) {
  if (dup2(line, kWorkerLine) == -1) giveUp("explore: line of a worker");
  if (line == kWorkerLine) fcntl(line, F_SETFD, 0);
  setenv("LD_PRELOAD", worker.preload.c_str(), 1);
  setenv("LD_BIND_NOW", "1", 1);  // not in each process anew
  if (!worker.library.empty()) setenv("LD_LIBRARY_PATH", worker.library.c_str(), 1);
  int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDOUT_FILENO);  // loading announces rows
  if (!getenv("EXPLORE_LOUD")) dup2(nowhere, STDERR_FILENO);
  execl(worker.program.c_str(), worker.program.c_str(), "serve", nullptr);
  giveUp(worker.program.c_str());
}

}  // namespace

Process::Process(const WorkerProgram& worker) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) giveUp("explore: line to a worker");
  server_ = fork();
  if (server_ == 0) become(worker, ends[1]);
  close(ends[1]);
  line_ = ends[0];
}

Process::~Process() {
  close(line_);
  if (server_ > 0) ::kill(server_, SIGKILL);
  waitpid(server_, nullptr, 0);
}

void Process::hear() {
  pollfd wait = {line_, POLLIN, 0};
  if (poll(&wait, 1, kLongestStep) != 1) giveUp("explore: a process neither goes on nor stands still");
  if (read(line_, &report_, sizeof report_) != static_cast<ssize_t>(sizeof report_))
    giveUp("explore: a worker is gone");
}

// What its calls gave is kept.
void Process::awaitEnd() {
  Report last = report_;
  hear();
  last.status = report_.status;
  last.park = last.park == kParkDone ? kParkDone : kParkEnded;
  report_ = last;
}

void Process::start(int operation) {
  Command command = {operation, 1};
  parks_ = 0;
  if (write(line_, &command, sizeof command) != static_cast<ssize_t>(sizeof command)) giveUp("explore: command");
  hear();
}

void Process::go() {
  if (write(line_, "g", 1) != 1) giveUp("explore: word to go on");
  ++parks_;
  hear();
  if (report_.park == kParkDone) awaitEnd();
}

void Process::kill() {
  ::kill(report_.pid, SIGKILL);
  awaitEnd();
}

int Process::runThrough(int operation) {
  Command command = {operation, 0};
  if (write(line_, &command, sizeof command) != static_cast<ssize_t>(sizeof command)) giveUp("explore: command");
  hear();
  return WIFEXITED(report_.status) ? WEXITSTATUS(report_.status) : -1;
}

}  // namespace kestrove::explore
