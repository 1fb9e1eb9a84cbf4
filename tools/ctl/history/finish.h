// SPDX-License-Identifier: Apache-2.0
// Ending what the journal holds: going on with a change that a death interrupted, taking back one that nobody
// confirmed.
#pragma once

#include "tools/ctl/history/journal.h"

namespace ctl {

enum class Urgency {
  kOverdue,  // what is interrupted, and what waited for too long
  kAll       // at the start of the appliance: what waits, too
};

// Of a command that opens the store. Says on standard error and in the system log what it did; a folder that cannot be
// used is told and keeps nobody from the store.
void finishAbandoned(const Session& session);

// The same for the holder of the folder's lock.
void finishAbandoned(const Session& session, const Home& home, Urgency urgency);

// At the start of the appliance: the folder's lock is taken before that of the store, the journal is ended behind the
// building of the store, before anybody else finds it. A change that waits for its confirmation counts as unconfirmed.
class EndAtStart {
 public:
  explicit EndAtStart(double waitSeconds);
  // With the store held. False when something that the journal holds could not be ended.
  bool end();

 private:
  Session session_;
  std::optional<Home> home_;
  std::optional<HomeLock> lock_;
};

// This entry, whatever its time.
void finishEntry(const Session& session, const Home& home, Entry entry);

}  // namespace ctl
