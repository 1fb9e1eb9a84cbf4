// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/watch/stop.h"

#include <poll.h>

#include <ctime>

#include "tools/common/steady_clock.h"

namespace ctl {
namespace {

volatile sig_atomic_t interrupted = 0;

void note(int) { interrupted = 1; }

}  // namespace

// The signal comes only during a pause, so that none falls between a look and a wait.
Stop::Stop() {
  sigset_t held;
  sigemptyset(&held);
  sigaddset(&held, SIGINT);
  sigprocmask(SIG_BLOCK, &held, &mask_);
  interrupted = 0;
  struct sigaction action = {};
  action.sa_handler = note;
  sigaction(SIGINT, &action, &before_);
}

Stop::~Stop() {
  sigaction(SIGINT, &before_, nullptr);
  sigprocmask(SIG_SETMASK, &mask_, nullptr);
}

bool Stop::asked() const { return interrupted != 0; }

bool Stop::pause(double seconds) const {
  const double end = tools::steadySeconds() + seconds;
  sigset_t open = mask_;
  sigdelset(&open, SIGINT);
  while (!asked()) {
    const double left = end - tools::steadySeconds();
    if (left <= 0) break;
    const auto whole = static_cast<time_t>(left);
    const struct timespec time = {whole, static_cast<long>((left - static_cast<double>(whole)) * 1e9)};
    ppoll(nullptr, 0, &time, &open);
  }
  return !asked();
}

}  // namespace ctl
