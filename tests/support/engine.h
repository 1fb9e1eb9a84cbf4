// SPDX-License-Identifier: Apache-2.0
// An engine for a test: a process in the engine's task slot that hears the signal.
#pragma once

#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "kestrove/kestrove.h"
#include "tests/support/files.h"

namespace kestrove::testing {

class EngineChild {
 public:
  EngineChild() {
    if (pipe(pipe_) != 0) abort();
    sigset_t heard;
    sigemptyset(&heard);
    sigaddset(&heard, SIGUSR1);
    sigaddset(&heard, SIGUSR2);
    // Blocked before the fork: no signal is lost while the child starts.
    sigprocmask(SIG_BLOCK, &heard, nullptr);
    pid_ = fork();
    if (pid_ == 0) listen(heard);
    sigprocmask(SIG_UNBLOCK, &heard, nullptr);
    close(pipe_[1]);
    shm->taskPids[4] = pid_;
  }
  ~EngineChild() {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    close(pipe_[0]);
  }
  EngineChild(const EngineChild&) = delete;
  EngineChild& operator=(const EngineChild&) = delete;

  pid_t pid() const { return pid_; }

  // Whether a signal came since the last question. A lower signal is delivered first, so the answer is complete.
  bool signalled() {
    kill(pid_, SIGUSR2);
    bool heard = false;
    char byte = 0;
    while (read(pipe_[0], &byte, 1) == 1 && byte != 'Q') {
      heard = true;
      sawChangeDone_ = byte == 'D';
    }
    return heard;
  }

  // Whether the configuration file was there and a change marked when the last signal came.
  bool sawChangeDone() const { return sawChangeDone_; }

 private:
  [[noreturn]] void listen(const sigset_t& heard) {
    for (int signal = 0; sigwait(&heard, &signal) == 0;) {
      bool done = access(kConfigFile, F_OK) == 0 && shm->pendingChanges != 0;
      if (write(pipe_[1], signal == SIGUSR2 ? "Q" : done ? "D" : "S", 1) != 1) break;
    }
    _exit(1);
  }

  int pipe_[2];
  pid_t pid_;
  bool sawChangeDone_ = false;
};

}  // namespace kestrove::testing
