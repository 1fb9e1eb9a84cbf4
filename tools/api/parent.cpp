// SPDX-License-Identifier: Apache-2.0
#include "tools/api/parent.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <vector>

#include "tools/api/worker.h"

namespace api {
namespace {

constexpr time_t kShortLife = 2;

struct Child {
  pid_t id = -1;
  time_t begun = 0;
  time_t due = 0;  // when it is started again
};

int live(int listener, pid_t parent, const Settings& settings) {
  sigset_t all;
  sigemptyset(&all);
  sigprocmask(SIG_SETMASK, &all, nullptr);
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) return 0;
  try {
    return Worker(listener, settings).serve();
  } catch (const std::exception& error) {
    syslog(LOG_ERR, "kestrove-api: %s", error.what());
    return 1;
  }
}

Child start(int listener, const Settings& settings) {
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child == 0) _exit(live(listener, parent, settings));
  if (child == -1) syslog(LOG_ERR, "kestrove-api: no worker can be started: %m");
  return {child, time(nullptr), time(nullptr) + 1};
}

// They wait until they are asked for, so that none falls between a look and a wait.
sigset_t heldSignals() {
  sigset_t held;
  sigemptyset(&held);
  for (int number : {SIGTERM, SIGINT, SIGCHLD}) sigaddset(&held, number);
  sigprocmask(SIG_BLOCK, &held, nullptr);
  return held;
}

// A worker that dies at once is waited with: whatever is wrong does not keep the machine busy.
void tellDeath(Child& child, int status) {
  if (WIFSIGNALED(status)) {
    syslog(LOG_WARNING, "kestrove-api: a worker was ended by signal %d and is started again", WTERMSIG(status));
  }
  child.id = -1;
  child.due = time(nullptr) + (time(nullptr) - child.begun < kShortLife ? 1 : 0);
}

void takeDead(std::vector<Child>& children) {
  int status = 0;
  for (pid_t dead; (dead = waitpid(-1, &status, WNOHANG)) > 0;) {
    for (Child& child : children) {
      if (child.id == dead) tellDeath(child, status);
    }
  }
}

void startMissing(std::vector<Child>& children, int listener, const Settings& settings) {
  for (Child& child : children) {
    if (child.id == -1 && time(nullptr) >= child.due) child = start(listener, settings);
  }
}

void endAll(const std::vector<Child>& children) {
  for (const Child& child : children) {
    if (child.id > 0) kill(child.id, SIGTERM);
  }
  for (const Child& child : children) {
    while (child.id > 0 && waitpid(child.id, nullptr, 0) == -1 && errno == EINTR) continue;
  }
}

}  // namespace

int superviseWorkers(const SocketPlace& place, int workers, const Settings& settings) {
  const kestrove::sys::Descriptor listener = listenAt(place);
  const sigset_t held = heldSignals();
  std::vector<Child> children(static_cast<size_t>(workers));
  constexpr struct timespec kPause = {1, 0};
  for (int number = 0; number != SIGTERM && number != SIGINT; number = sigtimedwait(&held, nullptr, &kPause)) {
    takeDead(children);
    startMissing(children, listener.get(), settings);
  }
  endAll(children);
  unlink(place.path.c_str());
  return 0;
}

}  // namespace api
