// SPDX-License-Identifier: Apache-2.0
// Making the settings of the attached store those of another one.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tools/ctl/settings/difference.h"

namespace ctl {

// One step of the way and what came of it.
struct Step {
  std::string section;
  std::string key;
  std::string line;    // the setting that it makes, or "- " and the one that it takes away
  bool done = false;   // made
  std::string reason;  // why not, or what is left to be told of a step that was made
};

struct Outcome {
  bool changed = false;            // the store is not as before
  bool saved = false;              // and the configuration file has it
  std::string unsavedReason;       // why not
  std::vector<Step> steps;         // in their order
  std::vector<std::string> notes;  // of the re-application, what failed in it
  Difference made;                 // between the store before and the store after
  Difference left;                 // between the store after and the target: empty when all was reached

  // kDone; kNotSaved; kRefused when nothing could be made, 9 (partly applied) when something is left.
  Exit exit() const;
};

struct CarryOptions {
  bool stopOnError = false;
  // Lines of the password file by user name, for users that come back; without one an added user has no password.
  std::map<std::string, std::string> passwordLines = {};
  // Called in front of each step with the number of those behind it and of all.
  std::function<void(size_t, size_t)> progress = nullptr;
};

// Holds the store from beginning to end. What is equal is not touched: when nothing differs nothing is written,
// stamped, logged or signalled.
Outcome carryOut(const Session& session, const ShmData& target, const CarryOptions& options = {});

// The outcome for --json: {"changed", "saved", "diff", "changes", "failed": [{"section", "key", "line", "reason"}]}.
Json outcomeJson(const Outcome& outcome);

}  // namespace ctl
