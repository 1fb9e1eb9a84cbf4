// SPDX-License-Identifier: Apache-2.0
// Keys of a terminal one by one, and the signals that concern whoever types them.
#pragma once

#include <signal.h>

#include <array>

namespace ctl {

// While it lives, a hang-up or a termination ends the input instead of the process, and a resized window is noticed;
// afterwards the signal that came does what it did before. So no signal leaves a terminal in the mode of an editor.
class TypingSignals {
 public:
  TypingSignals();
  ~TypingSignals();
  TypingSignals(const TypingSignals&) = delete;
  TypingSignals& operator=(const TypingSignals&) = delete;

 private:
  std::array<struct sigaction, 3> before_;
};

enum class KeyInput { kKey, kResized, kEnd };

// Waits for the next character of standard input. Bytes that are none in this locale, and NUL, are skipped.
KeyInput nextKey(wchar_t& key);

}  // namespace ctl
