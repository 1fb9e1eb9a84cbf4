// SPDX-License-Identifier: Apache-2.0
// The mode of the interfaces as a change of its own.
#pragma once

#include "tools/ctl/script/wish.h"
#include "tools/ctl/session.h"

namespace ctl {

// Two interfaces: where policy routing is on, it goes with the single interface.
void setMode(const Session& session, const ModeWish& wish);

}  // namespace ctl
