// SPDX-License-Identifier: Apache-2.0
// Programs beside the test, and waiting for what they do.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace kestrove::testing {

using Words = std::vector<std::string>;

constexpr int kPatience = 30000;  // milliseconds

template <typename Condition>
bool eventually(Condition condition) {
  for (int waited = 0; waited < kPatience; waited += 5) {
    if (condition()) return true;
    usleep(5000);
  }
  return condition();
}

// Of one process: 0 and less would be groups of them.
inline void strike(pid_t pid, int signal = SIGKILL) {
  ASSERT_GT(pid, 1);
  kill(pid, signal);
}

// The words by which a program runs without a right of root's: "-ipc_owner".
inline Words withoutRight(const std::string& right, const Words& program) {
  Words words = {"/usr/bin/setpriv", "--bounding-set", right};
  words.insert(words.end(), program.begin(), program.end());
  return words;
}

// A program as this process's child, ended with the object. Its words go to that descriptor where one is given.
class Program {
 public:
  explicit Program(Words words, int out = -1) : pid_(fork()) {
    if (pid_ != 0) return;
    if (out != -1) dup2(out, STDOUT_FILENO);
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(126);
  }
  ~Program() {
    if (pid_ > 0) end(SIGKILL);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  pid_t pid() const { return pid_; }
  bool lives() const { return waitpid(pid_, nullptr, WNOHANG) == 0; }
  // Its exit status; -1 when a signal ended it.
  int end(int signal = SIGTERM) {
    strike(pid_, signal);
    return status();
  }
  int status() {
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t pid_;
};

// One that is listened to.
class TalkingProgram {
 public:
  explicit TalkingProgram(const Words& words) : TalkingProgram(words, Ends()) {}
  ~TalkingProgram() { close(words_); }

  Program& operator*() { return program_; }
  Program* operator->() { return &program_; }
  // The next line it said; empty at its end or when it stays silent too long.
  std::string line() const {
    std::string text;
    pollfd ready = {words_, POLLIN, 0};
    for (char c; poll(&ready, 1, kPatience) == 1 && read(words_, &c, 1) == 1 && c != '\n';) text += c;
    return text;
  }

 private:
  struct Ends {
    Ends() {
      if (pipe2(ends, O_CLOEXEC) != 0) abort();
    }
    int ends[2];
  };
  TalkingProgram(const Words& words, Ends pipe) : program_(words, pipe.ends[1]), words_(pipe.ends[0]) {
    close(pipe.ends[1]);
  }

  Program program_;
  int words_;
};

inline bool lives(pid_t pid) { return pid > 1 && kill(pid, 0) == 0; }

}  // namespace kestrove::testing
