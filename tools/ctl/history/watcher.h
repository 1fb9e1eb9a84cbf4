// SPDX-License-Identifier: Apache-2.0
// The process that takes a change back when its time is over.
#pragma once

#include <string>

#include "tools/ctl/session.h"

namespace ctl {

// Starts kestrovectl anew in a session of its own, without a terminal: neither a hang-up nor an interrupt reaches it.
// Throws kSystem when it cannot be started.
void startWatcher(const std::string& id);

// What it does: waits for the end of the change that has this id, or of its time.
void watch(const Session& session, const std::string& id);

// Waits until that change is confirmed or taken back; whether it was confirmed.
bool awaitOutcome(const std::string& id);

}  // namespace ctl
