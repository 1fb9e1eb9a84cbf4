// Passwords: from a prompt without echo, or a line of standard input; wiped when done with.
#pragma once

#include <string>

namespace ctl {

class Secret {
 public:
  // Reads one password; throws kUsage when none comes.
  explicit Secret(const char* prompt);
  ~Secret();
  Secret(const Secret&) = delete;
  Secret& operator=(const Secret&) = delete;

  const char* text() const { return text_; }
  bool empty() const { return text_[0] == '\0'; }

 private:
  char text_[256] = {};
};

}  // namespace ctl
