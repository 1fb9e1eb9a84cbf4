// SPDX-License-Identifier: Apache-2.0
#include "sandbox/init.h"

#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "sandbox/appliance.h"
#include "sandbox/collector.h"
#include "sandbox/ports.h"
#include "sandbox/privacy.h"
#include "sandbox/privileges.h"
#include "sandbox/report.h"
#include "sandbox/root.h"
#include "sandbox/stage.h"

namespace kestrove::sandbox {
namespace {

constexpr char kHostName[] = "kestrove";
constexpr char kPath[] = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";

std::string currentFolder() {
  char* path = getcwd(nullptr, 0);
  std::string result = path ? path : "/";
  free(path);
  return result;
}

void buildAppliance(const Options& options) {
  umask(022);
  std::string folder = currentFolder();
  takeMountsApart();
  (void)!chdir(folder.c_str());
  makeStage();
  layAppliance(options);
  if (options.ports) openPorts();
  raiseLoopback();
  mountRoot(options);
  enterRoot();
  if (sethostname(kHostName, sizeof kHostName - 1) == -1) giveUp("cannot set the host name: %m");
  if (chdir(folder.c_str()) == -1) (void)!chdir("/");
}

int blockSignals() {
  sigset_t all;
  sigfillset(&all);
  sigprocmask(SIG_SETMASK, &all, nullptr);
  sigset_t children;
  sigemptyset(&children);
  sigaddset(&children, SIGCHLD);
  return signalfd(-1, &children, SFD_CLOEXEC | SFD_NONBLOCK);
}

// A shell at a terminal wants to be in the foreground of a group that it can see.
void takeTerminal() {
  setpgid(0, 0);
  tcsetpgrp(STDIN_FILENO, getpid());
}

[[noreturn]] void becomeCommand(const Options& options) {
  if (options.terminal) takeTerminal();
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  std::string path = kPath;
  if (const char* own = getenv("PATH")) path = path + ":" + own;
  setenv("PATH", path.c_str(), 1);
  setenv("HOME", "/root", 1);
  execvp(options.command[0], options.command);
  int error = errno;
  dprintf(STDERR_FILENO, "kestrove-sandbox: %s: %s\n", options.command[0], strerror(error));
  _exit(error == ENOENT ? kNotFound : kNotExecutable);
}

int statusOf(int raw) { return WIFSIGNALED(raw) ? 128 + WTERMSIG(raw) : WEXITSTATUS(raw); }

// Takes in every child that has ended; true when the command was among them.
bool reap(pid_t command, int& status) {
  bool ended = false;
  int raw = 0;
  for (pid_t child = 0; (child = waitpid(-1, &raw, WNOHANG)) > 0;) {
    if (child != command) continue;
    status = statusOf(raw);
    ended = true;
  }
  return ended;
}

void drain(int signals) {
  signalfd_siginfo info;
  while (read(signals, &info, sizeof info) > 0) continue;
}

[[noreturn]] void serve(pid_t command, const Collector& log, int signals, int outside) {
  pollfd watched[] = {{signals, POLLIN, 0}, {log.socket(), POLLIN, 0}, {outside, POLLIN, 0}};
  for (int status = 0;;) {
    if (poll(watched, 3, -1) == -1) continue;
    if (watched[2].revents) _exit(128 + SIGKILL);
    log.collect();
    if (!watched[0].revents) continue;
    drain(signals);
    if (!reap(command, status)) continue;
    log.collect();
    _exit(status);
  }
}

}  // namespace

void runInit(const Options& options, int outside) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  prctl(PR_SET_NAME, "init");
  buildAppliance(options);
  Collector log;
  dropPrivileges();
  int signals = blockSignals();
  pid_t command = fork();
  if (command == -1) giveUp("cannot start a process: %m");
  if (command == 0) becomeCommand(options);
  serve(command, log, signals, outside);
}

}  // namespace kestrove::sandbox
