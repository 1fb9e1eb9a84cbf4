// SPDX-License-Identifier: Apache-2.0
// Passwords: from a prompt without echo, or a line of standard input; wiped when done with.
#pragma once

#include <string>

namespace ctl {

class Secret {
 public:
  // Reads one password; a new one twice where it is typed. Throws kUsage when it is too long, holds a control character
  // or was not repeated. A signal that comes meanwhile finds the terminal's echo back.
  enum class Kind { kPresent, kNew };
  explicit Secret(const char* prompt, Kind kind = Kind::kPresent);
  ~Secret();
  Secret(const Secret&) = delete;
  Secret& operator=(const Secret&) = delete;

  const char* text() const { return text_; }
  bool empty() const { return text_[0] == '\0'; }

 private:
  void refuse(const std::string& why);

  char text_[256] = {};
};

}  // namespace ctl
