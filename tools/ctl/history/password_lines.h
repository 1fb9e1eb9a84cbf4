// SPDX-License-Identifier: Apache-2.0
// The users' lines of the password file, for the journal of a change that may be taken back: no revision has them.
#pragma once

#include "kestrove/layout.h"
#include "tools/ctl/session.h"

namespace ctl {

// By name; only of users of the store.
Json passwordLines(const ShmData& store);

}  // namespace ctl
