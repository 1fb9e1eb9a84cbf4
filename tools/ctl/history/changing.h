// SPDX-License-Identifier: Apache-2.0
// Which commands can be taken back: those take --confirm.
#pragma once

#include "tools/ctl/grammar.h"

namespace ctl {

bool canBeTakenBack(const Command& row);

// Throws kUsage for --comment and --confirm with a command that only reads, and for --confirm with one whose change
// cannot be taken back.
void refuseKeeping(const Session& session, const Command& row);

}  // namespace ctl
