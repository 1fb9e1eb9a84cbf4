// SPDX-License-Identifier: Apache-2.0
// Which commands can be taken back: those take --confirm.
#pragma once

#include "tools/ctl/grammar.h"

namespace ctl {

// Takes --comment; nothing else may make a revision.
bool keepsRevision(const Command& row);
// Takes --confirm, too.
bool canBeTakenBack(const Command& row);

// Throws kUsage for --comment and --confirm with a command that has no use for it.
void refuseKeeping(const Session& session, const Command& row);

// Behind a command: that one of the two was given and came to nothing.
void tellUnkept(const Session& session);

}  // namespace ctl
