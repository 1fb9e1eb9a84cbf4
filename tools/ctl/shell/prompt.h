// SPDX-License-Identifier: Apache-2.0
// The prompt: which unit this is, in which mode, and what is still to be done about its changes.
#pragma once

#include <string>

#include "tools/ctl/session.h"

namespace ctl {

struct UnitState {
  std::string name = {};     // sysName, or the gateway id
  std::string mode = {};     // "config", "debug", or empty
  bool unsaved = false;      // changes that a restart would lose
  bool unconfirmed = false;  // a change that goes back unless it is confirmed
};

// What was found out about changes, for as long as settings and file stay as they are: it takes its time.
struct KnownUnsaved {
  std::string mark = {};
  bool unsaved = false;
};

// Of the store as it stands, without its lock: a prompt keeps nobody waiting.
UnitState unitState(KnownUnsaved& known);

// "wan-4[config]*! > ": a star for what is not saved, a mark for what is not confirmed. A person who may only read gets
// "$" for the last character of all others.
std::string promptText(const UnitState& state, bool readsOnly, bool colours);

}  // namespace ctl
