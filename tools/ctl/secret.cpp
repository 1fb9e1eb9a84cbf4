#include "tools/ctl/secret.h"

#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "tools/ctl/session.h"

namespace ctl {
namespace {

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
  bool terminal() const { return terminal_; }

 private:
  struct termios before_ = {};
  bool terminal_;
};

// Byte by byte, so that a second password stays in the pipe and no stream buffer keeps the first.
bool readLine(char* buffer, size_t size) {
  size_t length = 0;
  for (char c; read(STDIN_FILENO, &c, 1) == 1 && c != '\n';) {
    if (length == size - 1) return false;
    buffer[length++] = c;
  }
  buffer[length] = '\0';
  return true;
}

}  // namespace

Secret::Secret(const char* prompt) {
  EchoOff quiet;
  if (quiet.terminal()) fprintf(stderr, "%s: ", prompt);
  bool whole = readLine(text_, sizeof text_);
  if (quiet.terminal()) fputc('\n', stderr);
  if (!whole) {
    explicit_bzero(text_, sizeof text_);
    throw Refusal(kUsage, std::string(prompt) + ": too long");
  }
}

Secret::~Secret() { explicit_bzero(text_, sizeof text_); }

}  // namespace ctl
