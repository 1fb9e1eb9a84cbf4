// SPDX-License-Identifier: Apache-2.0
// New events as they come.
#pragma once

#include <memory>

#include "kestrove/layout.h"
#include "tools/ctl/session.h"
#include "tools/ctl/watch/same_store.h"

namespace ctl {

class EventFollower {
 public:
  // Of the attached store; what the log holds now is not news.
  explicit EventFollower(const Session& session);

  // Prints what has come since the last look: a line each, with --json an object each. The lock is taken only when
  // there is something, and held no longer than it takes to read it. Throws kNoStore when the store was built anew.
  void look();

 private:
  bool changed() const;
  std::string takeNews();

  const Session& session_;
  SameStore store_;
  std::unique_ptr<EventLog> seen_;
};

// Until an interrupt, or for so many seconds where that is not 0.
void followEvents(const Session& session, int seconds);

}  // namespace ctl
