// SPDX-License-Identifier: Apache-2.0
// Another process that takes the store's lock at the very moment at which it is given up.
#pragma once

#include "tests/support/peer.h"

namespace kestrove::testing {

// Whoever waits for the lock meanwhile waits no time: that he would is noted, with his limit. There is one thief at a
// time; the processes that are forked while it lives are watched, too.
class LockThief {
 public:
  LockThief();
  ~LockThief();
  LockThief(const LockThief&) = delete;
  LockThief& operator=(const LockThief&) = delete;

  // From now on: takes it at the n-th time that it is given up; at once where n is 0. Forgets what was noted.
  void strikeAt(int release);
  void letGo();

  pid_t pid() const { return peer_.pid(); }
  bool struck() const;
  // Waits without a limit, of whoever had changed nothing in the store yet: who has begun may end what he does.
  int endlessWaits() const;
  // Of all waits that had a limit.
  double secondsWaited() const;

 private:
  Peer peer_;
};

}  // namespace kestrove::testing
