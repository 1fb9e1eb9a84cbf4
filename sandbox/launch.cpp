// SPDX-License-Identifier: Apache-2.0
#include "sandbox/launch.h"

#include <errno.h>
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <stdio.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "sandbox/files.h"
#include "sandbox/init.h"
#include "sandbox/report.h"

namespace kestrove::sandbox {
namespace {

struct Namespace {
  int flag;
  const char* name;
};
constexpr Namespace kNamespaces[] = {
    {CLONE_NEWNS, "mount"}, {CLONE_NEWNET, "network"}, {CLONE_NEWIPC, "IPC"},
    {CLONE_NEWUTS, "UTS"},  {CLONE_NEWPID, "PID"},
};

// Root of a user namespace of our own is root enough for the appliance.
bool becomeRoot() {
  const std::string user = "0 " + std::to_string(geteuid()) + " 1\n";
  const std::string group = "0 " + std::to_string(getegid()) + " 1\n";
  if (unshare(CLONE_NEWUSER) == -1) return false;
  writeText("/proc/self/setgroups", "deny", 0);
  writeText("/proc/self/uid_map", user, 0);
  writeText("/proc/self/gid_map", group, 0);
  return true;
}

void enterNamespaces() {
  bool root = geteuid() == 0 && unshare(CLONE_NEWNS) == 0;
  if (!root && !becomeRoot()) giveUp("this system gives no user namespace to an ordinary user: %m");
  for (const Namespace& space : kNamespaces) {
    if (unshare(space.flag) == -1) giveUp("this system gives no %s namespace: %m", space.name);
  }
}

// Interrupts from a terminal reach the command by themselves; what asks the launcher to end ends the appliance, since
// process 1 dies with its launcher.
void ignoreInterrupts() {
  for (int number : {SIGINT, SIGQUIT, SIGTTOU}) signal(number, SIG_IGN);
}

int waitFor(pid_t init) {
  int status = 0;
  while (waitpid(init, &status, 0) == -1) {
    if (errno != EINTR) giveUp("lost the appliance: %m");
  }
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

int launch(const Options& options) {
  int alive[2];
  if (pipe2(alive, O_CLOEXEC) == -1) giveUp("no pipe: %m");
  enterNamespaces();
  pid_t init = fork();
  if (init == -1) giveUp("cannot start a process: %m");
  if (init == 0) {
    close(alive[1]);
    runInit(options, alive[0]);
  }
  ignoreInterrupts();
  int status = waitFor(init);
  if (options.terminal) tcsetpgrp(STDIN_FILENO, getpgrp());
  return status;
}

}  // namespace kestrove::sandbox
