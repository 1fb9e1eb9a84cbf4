// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/typed_keys.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cwchar>

namespace ctl {
namespace {

constexpr std::array kNumbers = {SIGHUP, SIGTERM, SIGWINCH};

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): a handler has nothing else to write to
volatile sig_atomic_t ending;
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): the same
volatile sig_atomic_t resized;

void note(int number) {
  if (number == SIGWINCH) {
    resized = 1;
  } else {
    ending = number;
  }
}

// One that comes between the look and the wait still ends the wait.
void awaitInput() {
  sigset_t mine;
  sigset_t before;
  sigemptyset(&mine);
  for (int number : kNumbers) sigaddset(&mine, number);
  sigprocmask(SIG_BLOCK, &mine, &before);
  struct pollfd input = {STDIN_FILENO, POLLIN, 0};
  if (!ending && !resized) ppoll(&input, 1, nullptr, &before);
  sigprocmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace

TypingSignals::TypingSignals() {
  ending = 0;
  struct sigaction noting = {};
  noting.sa_handler = note;
  for (size_t i = 0; i < kNumbers.size(); ++i) sigaction(kNumbers[i], &noting, &before_[i]);
}

TypingSignals::~TypingSignals() {
  for (size_t i = 0; i < kNumbers.size(); ++i) sigaction(kNumbers[i], &before_[i], nullptr);
  if (ending) raise(ending);
}

// A Ctrl-D that was typed while no line was read arrives as NUL, which the line editor would take for the key that
// quotes the next one.
KeyInput nextKey(wchar_t& key) {
  mbstate_t state = {};
  for (;;) {
    awaitInput();
    if (ending) return KeyInput::kEnd;
    if (resized) {
      resized = 0;
      return KeyInput::kResized;
    }
    char byte;
    const ssize_t length = read(STDIN_FILENO, &byte, 1);
    if (length == -1 && errno == EINTR) continue;
    if (length != 1) return KeyInput::kEnd;
    const size_t size = mbrtowc(&key, &byte, 1, &state);
    if (size == 1) return KeyInput::kKey;
    if (size == static_cast<size_t>(-1)) state = {};
  }
}

}  // namespace ctl
