// SPDX-License-Identifier: Apache-2.0
// The mode of the interfaces as a change of its own.
#pragma once

#include "tools/ctl/script/wish.h"
#include "tools/ctl/session.h"

namespace ctl {

// Into a store of nobody.
void putMode(ConfigRecord& config, const ModeWish& wish);

// A mode that was set is another one's, never none.
void refuseUnsetting(const ConfigRecord& config, const ModeWish& wish);

// Two interfaces: where policy routing is on, it goes with the single interface.
void setMode(const Session& session, const ModeWish& wish);

}  // namespace ctl
