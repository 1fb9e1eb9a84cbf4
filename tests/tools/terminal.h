// SPDX-License-Identifier: Apache-2.0
// A terminal, as a person sits at it.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <string>
#include <vector>

namespace kestrove::testing {

// kestrovectl on a terminal of its own.
class Terminal {
 public:
  // A session of its own gets signals from keys; only a process that has its parent in its session can be stopped.
  explicit Terminal(std::vector<const char*> words, bool ownSession = true, unsigned short columns = 0) {
    words.insert(words.begin(), KESTROVECTL);
    words.push_back(nullptr);
    const struct winsize size = sized(columns);
    if (openpty(&side_, &other_, nullptr, nullptr, columns ? &size : nullptr) != 0) abort();
    pid_ = fork();
    if (pid_ != 0) return;
    close(side_);
    if (ownSession) {
      login_tty(other_);
    } else {
      setpgid(0, 0);
      for (int fd = 0; fd <= 2; ++fd) dup2(other_, fd);
    }
    execv(words[0], const_cast<char* const*>(words.data()));
    _exit(127);
  }
  ~Terminal() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    close(side_);
    close(other_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  // Waits until the program has said it.
  bool says(const std::string& text, int looks = 500) {
    for (int i = 0; i < looks && heard_.find(text, seen_) == std::string::npos; ++i) hear(20);
    const size_t at = heard_.find(text, seen_);
    if (at == std::string::npos) return false;
    seen_ = at + text.size();
    return true;
  }
  void type(const std::string& text) {
    EXPECT_EQ(static_cast<ssize_t>(text.size()), write(side_, text.data(), text.size()));
  }
  void resize(unsigned short lines, unsigned short columns) {
    const struct winsize size = {lines, columns, 0, 0};
    EXPECT_EQ(0, ioctl(side_, TIOCSWINSZ, &size));
  }
  bool echoes() const {
    struct termios settings;
    return tcgetattr(side_, &settings) == 0 && (settings.c_lflag & ECHO) != 0;
  }
  // Echo is off only after the prompt was written, or before: waits for either.
  bool becomes(bool echo) const {
    for (int i = 0; i < 250 && echoes() != echo; ++i) usleep(20000);
    return echoes() == echo;
  }
  void signal(int number) { kill(pid_, number); }
  // Exit status, or 128 and the number of the signal.
  // The same, typing keys that leave until it has ended: while a command still runs they are lost.
  int leave(const std::string& keys) {
    for (int i = 0; i < 50 && pid_ > 0; ++i) {
      type(keys);
      if (const int status = end(10); status != -1) return status;
    }
    return -1;
  }
  int end(int tries = 500) {
    int status = 0;
    for (int i = 0; i < tries; ++i) {
      hear(10);
      if (waitpid(pid_, &status, WNOHANG) != pid_) continue;
      pid_ = -1;
      hear(10);
      return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return -1;
  }
  bool stopped() const {
    int status = 0;
    for (int i = 0; i < 250; ++i) {
      if (waitpid(pid_, &status, WNOHANG | WUNTRACED) == pid_) return WIFSTOPPED(status);
      usleep(20000);
    }
    return false;
  }
  const std::string& heard() const { return heard_; }

 private:
  static struct winsize sized(unsigned short columns) { return {24, columns, 0, 0}; }
  void hear(int milliseconds) {
    struct pollfd input = {side_, POLLIN, 0};
    char buffer[512];
    if (poll(&input, 1, milliseconds) != 1) return;
    const ssize_t length = read(side_, buffer, sizeof buffer);
    if (length > 0) heard_.append(buffer, static_cast<size_t>(length));
  }

  pid_t pid_ = -1;
  int side_ = -1;
  int other_ = -1;
  std::string heard_;
  size_t seen_ = 0;
};

}  // namespace kestrove::testing
