// SPDX-License-Identifier: Apache-2.0
// The journal: the settings that a change which is under way ends with when nobody says otherwise. It is written before
// the change and goes when the change is over, so that a death in between leaves something to go on with.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/ctl/history/pending.h"
#include "tools/ctl/history/record.h"
#include "tools/ctl/home.h"

namespace ctl {

enum class Stage {
  kForward,  // a change of many steps is made: the settings are those that it leads to
  kTrying,   // a change that needs a confirmation is made: the settings are those before it
  kWaiting,  // it is made, and waits for its confirmation
  kBack      // it is taken back
};

struct Entry {
  Stage stage = Stage::kForward;
  std::string id = {};  // of this change
  std::string user = {};
  std::string comment = {};
  std::string command = {};
  std::string time = {};
  uint32_t source = 0;  // what its events carry
  std::string eventUser = {};
  int revision = 0;                     // that the change has made; 0 while there is none
  double minutes = 0;                   // to confirm it in
  int64_t deadline = 0;                 // nanoseconds since the machine was started, time asleep included
  std::string boot = {};                // the start that this counts from
  Json passwordLines = Json::object();  // of the users before the change
  std::string settings = {};
  bool interrupted = false;  // found so: not in the file

  bool confirmable() const { return stage != Stage::kForward; }
};

// Where the machine's own clock stands, which nobody can set.
struct BootTime {
  std::string boot = {};
  int64_t nanoseconds = 0;
};
BootTime bootTimeNow();

// Nanoseconds until the change goes back; 0 when that is due, as it is after a restart of the machine.
int64_t remaining(const Entry& entry, const BootTime& now);

class Journal {
 public:
  explicit Journal(const Home& home) : home_(home) {}

  // None where nothing is under way. A file that makes no sense is put aside, and that is said.
  std::optional<Entry> read() const;
  void write(const Entry& entry) const;
  void remove() const;

  // What became of a change that waited: "confirmed" or "taken back".
  void remember(const std::string& id, const std::string& outcome) const;
  std::optional<std::string> outcomeOf(const std::string& id) const;

 private:
  const Home& home_;
};

// One call of the system.
bool journalThere();

Pending pendingOf(const Entry& entry, const BootTime& now);

// "'set wanLinkRate 64000' of alice (revision 12), at 2026-11-21T22:17:46Z".
std::string describe(const Entry& entry);

}  // namespace ctl
