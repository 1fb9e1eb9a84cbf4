// SPDX-License-Identifier: Apache-2.0
#include "tools/common/standard_output.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace tools {
namespace {

// In the wrong direction on purpose: reading from what was no input, and writing to what was no output, must fail.
void openMissing() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (fcntl(fd, F_GETFD) != -1 || errno != EBADF) continue;
    if (open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY) != fd) _exit(5);
  }
}

void heard(int) {}

// A handler, which other programs do not inherit as they would an ignored signal.
void surviveBrokenPipe() {
  struct sigaction action = {};
  action.sa_handler = heard;
  sigaction(SIGPIPE, &action, nullptr);
}

}  // namespace

FILE* takeStandardOutput() {
  openMissing();
  surviveBrokenPipe();
  int own = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  fflush(stdout);
  if (own == -1 || dup2(STDERR_FILENO, STDOUT_FILENO) == -1) return stdout;
  FILE* stream = fdopen(own, "w");
  return stream ? stream : fopen("/dev/null", "re");  // of no output: what is written to it fails
}

std::string writeOut(FILE* stream, const std::string& text) {
  errno = 0;
  const bool written = fwrite(text.data(), 1, text.size(), stream) == text.size() && fflush(stream) == 0;
  return written ? "" : std::string("standard output: ") + strerror(errno);
}

}  // namespace tools
