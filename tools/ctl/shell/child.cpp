// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/child.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "tools/ctl/session.h"

namespace ctl {
namespace {

int outcome(const std::function<int()>& work) {
  try {
    return work();
  } catch (const Refusal& refusal) {
    if (*refusal.what()) warn(refusal.what());
    return refusal.exit();
  }
}

// A command ends with the shell that runs it, by the keys that end commands, and when nobody reads what it writes.
[[noreturn]] void live(pid_t parent, const std::function<int()>& work) {
  prctl(PR_SET_PDEATHSIG, SIGHUP);
  if (getppid() != parent) _exit(kSystem);
  for (int number : {SIGINT, SIGPIPE}) signal(number, SIG_DFL);
  const int status = outcome(work);
  fflush(nullptr);
  _exit(status);
}

int statusOf(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) == -1) {
    if (errno != EINTR) return kSystem;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

pid_t start(const std::function<int()>& work) {
  fflush(nullptr);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child == -1) throw systemRefusal("a new process", errno);
  if (child == 0) live(parent, work);
  return child;
}

void drain(int fd, const std::function<bool(const std::string&)>& output) {
  char buffer[65536];
  for (;;) {
    const ssize_t length = read(fd, buffer, sizeof buffer);
    if (length == -1 && errno == EINTR) continue;
    if (length <= 0 || !output(std::string(buffer, static_cast<size_t>(length)))) return;
  }
}

}  // namespace

int inChild(const std::function<int()>& work) { return statusOf(start(work)); }

int inChild(const std::function<int(FILE*)>& work, const std::function<bool(const std::string&)>& output) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw systemRefusal("a pipe", errno);
  const pid_t child = start([&] {
    close(ends[0]);
    FILE* out = fdopen(ends[1], "w");
    return out ? work(out) : int{kSystem};
  });
  close(ends[1]);
  drain(ends[0], output);
  close(ends[0]);
  return statusOf(child);
}

std::string textFromChild(const std::function<std::string()>& work) {
  std::string text;
  const int status = inChild(
      [&work](FILE* out) {
        const std::string found = work();
        return fwrite(found.data(), 1, found.size(), out) == found.size() ? 0 : int{kSystem};
      },
      [&text](const std::string& piece) {
        text += piece;
        return true;
      });
  return status == 0 ? text : "";
}

}  // namespace ctl
