// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/secret.h"

#include <poll.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tools/common/plain_text.h"
#include "tools/ctl/session.h"

namespace ctl {
namespace {

constexpr int kSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP, SIGTTIN, SIGTTOU};
constexpr size_t kSignalCount = sizeof kSignals / sizeof kSignals[0];

volatile sig_atomic_t caught = 0;

void note(int signal) { caught = signal; }

// Signals come only while input is waited for, so that none falls between a look and a wait.
class HeldSignals {
 public:
  HeldSignals() {
    sigset_t held;
    sigemptyset(&held);
    for (int signal : kSignals) sigaddset(&held, signal);
    sigprocmask(SIG_BLOCK, &held, &mask_);
    struct sigaction action = {};
    action.sa_handler = note;
    for (size_t i = 0; i < kSignalCount; ++i) {
      sigaction(kSignals[i], nullptr, &before_[i]);
      if (before_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
    }
    caught = 0;
  }
  ~HeldSignals() { release(); }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

  // As they were before: a signal that is raised then does what it does to any program.
  void release() {
    if (released_) return;
    released_ = true;
    for (size_t i = 0; i < kSignalCount; ++i) sigaction(kSignals[i], &before_[i], nullptr);
    sigprocmask(SIG_SETMASK, &mask_, nullptr);
  }

  // False when a signal came first.
  bool awaitInput() const {
    struct pollfd input = {STDIN_FILENO, POLLIN, 0};
    while (ppoll(&input, 1, nullptr, &mask_) == -1) {
      if (errno != EINTR || caught != 0) return false;
    }
    return true;
  }

 private:
  sigset_t mask_;
  struct sigaction before_[kSignalCount] = {};
  bool released_ = false;
};

class EchoOff {
 public:
  EchoOff() : terminal_(isatty(STDIN_FILENO) && tcgetattr(STDIN_FILENO, &before_) == 0) {
    if (!terminal_) return;
    struct termios quiet = before_;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
  }
  ~EchoOff() {
    if (terminal_) tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
  }
  EchoOff(const EchoOff&) = delete;
  EchoOff& operator=(const EchoOff&) = delete;

 private:
  struct termios before_ = {};
  bool terminal_;
};

enum class Reading { kLine, kTooLong, kInterrupted };

// Byte by byte, so that a second password stays in the pipe and no stream buffer keeps the first.
Reading readLine(const HeldSignals& signals, char* buffer, size_t size) {
  size_t length = 0;
  for (;;) {
    char c;
    if (!signals.awaitInput()) return Reading::kInterrupted;
    if (read(STDIN_FILENO, &c, 1) != 1 || c == '\n') break;
    if (length == size - 1) return Reading::kTooLong;
    buffer[length++] = c;
  }
  buffer[length] = '\0';
  return Reading::kLine;
}

Reading readQuietly(const HeldSignals& signals, const char* prompt, char* buffer, size_t size) {
  EchoOff quiet;
  const bool terminal = isatty(STDIN_FILENO);
  if (terminal) fprintf(stderr, "%s: ", prompt);
  Reading reading = readLine(signals, buffer, size);
  if (terminal) fputc('\n', stderr);
  return reading;
}

// Asks again after a signal that only stopped the program for a while.
Reading ask(const char* prompt, char* buffer, size_t size) {
  for (;;) {
    HeldSignals signals;
    Reading reading = readQuietly(signals, prompt, buffer, size);
    if (reading != Reading::kInterrupted) return reading;
    explicit_bzero(buffer, size);
    signals.release();
    raise(caught);
  }
}

}  // namespace

Secret::Secret(const char* prompt, Kind kind) {
  if (ask(prompt, text_, sizeof text_) == Reading::kTooLong) refuse(std::string(prompt) + ": too long");
  if (tools::hasControlCharacter(text_)) refuse(std::string(prompt) + ": control characters are refused");
  if (kind == Kind::kPresent || !isatty(STDIN_FILENO)) return;
  char again[sizeof text_] = {};
  const bool same =
      ask((std::string(prompt) + " again").c_str(), again, sizeof again) == Reading::kLine && strcmp(again, text_) == 0;
  explicit_bzero(again, sizeof again);
  if (!same) refuse("the two passwords differ; nothing is changed");
}

void Secret::refuse(const std::string& why) {
  explicit_bzero(text_, sizeof text_);
  throw Refusal(kUsage, why);
}

Secret::~Secret() { explicit_bzero(text_, sizeof text_); }

}  // namespace ctl
