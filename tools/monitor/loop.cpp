// SPDX-License-Identifier: Apache-2.0
#include "tools/monitor/loop.h"

#include <signal.h>
#include <sys/epoll.h>
#include <sys/signalfd.h>

namespace monitor {
namespace {

int endingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (int number : {SIGTERM, SIGINT}) sigaddset(&signals, number);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

}  // namespace

Loop::Loop() : events_(epoll_create1(EPOLL_CLOEXEC)), signals_(endingSignals()) { watch(signals_.get()); }

void Loop::watch(int descriptor) const {
  struct epoll_event event = {};
  event.events = EPOLLIN;
  event.data.fd = descriptor;
  epoll_ctl(events_.get(), EPOLL_CTL_ADD, descriptor, &event);
}

void Loop::sleep(Milliseconds longest) const {
  struct epoll_event event;
  epoll_wait(events_.get(), &event, 1, static_cast<int>(std::clamp<Milliseconds>(longest, 0, 60000)));
}

bool Loop::toldToEnd() const {
  struct signalfd_siginfo signal;
  return read(signals_.get(), &signal, sizeof signal) == static_cast<ssize_t>(sizeof signal);
}

}  // namespace monitor
