// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/screen.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "tools/common/program.h"

namespace ctl {
namespace {

bool given(const char* variable) {
  const char* value = getenv(variable);
  return value && *value;
}

bool hasPager() { return given("PAGER") || !tools::findProgram("less").empty(); }

// With what a person has set for it; -FRX where that is nothing.
[[noreturn]] void becomePager(int input) {
  dup2(input, STDIN_FILENO);
  signal(SIGPIPE, SIG_DFL);
  setenv("LESS", "-FRX", 0);
  if (given("PAGER")) {
    execl("/bin/sh", "sh", "-c", getenv("PAGER"), nullptr);
  } else {
    execlp("less", "less", nullptr);
  }
  _exit(127);
}

}  // namespace

ScreenSize screenSize(FILE* terminal) {
  struct winsize size = {};
  if (ioctl(fileno(terminal), TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0) return {};
  return {size.ws_row, size.ws_col};
}

bool showsColours(FILE* terminal) {
  const char* kind = getenv("TERM");
  return isatty(fileno(terminal)) && !given("NO_COLOR") && kind && *kind && strcmp(kind, "dumb") != 0;
}

Screen::Screen(FILE* terminal, bool pager)
    : terminal_(terminal), waits_(pager && isatty(fileno(terminal)) && hasPager()) {}

Screen::~Screen() {
  if (pager_) fclose(pager_);
  while (process_ > 0 && waitpid(process_, nullptr, 0) == -1 && errno == EINTR) continue;
}

// A long line takes several rows.
void Screen::line(const std::string& line) {
  if (!waits_) return write(line + "\n");
  const ScreenSize size = screenSize(terminal_);
  kept_ += line + "\n";
  rows_ += 1 + (line.empty() ? 0 : (line.size() - 1) / size.columns);
  if (rows_ < size.rows) return;
  startPager();
  write(kept_);
}

void Screen::startPager() {
  waits_ = false;
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return;
  // Standard output of this process is its error output: the pager's is the terminal itself.
  const int terminal = fileno(terminal_);
  process_ = fork();
  if (process_ == 0) {
    dup2(terminal, STDOUT_FILENO);
    signal(SIGINT, SIG_DFL);
    becomePager(ends[0]);
  }
  close(ends[0]);
  pager_ = process_ > 0 ? fdopen(ends[1], "w") : nullptr;
  if (!pager_) close(ends[1]);
}

void Screen::write(const std::string& text) {
  FILE* out = pager_ ? pager_ : terminal_;
  if (fwrite(text.data(), 1, text.size(), out) != text.size() || fflush(out) != 0) left_ = true;
}

void Screen::end() {
  if (waits_) write(kept_);
  waits_ = false;
  kept_.clear();
}

}  // namespace ctl
