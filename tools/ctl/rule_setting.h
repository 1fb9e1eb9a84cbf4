// SPDX-License-Identifier: Apache-2.0
// A rule as a change of its own.
#pragma once

#include "tools/ctl/script/wish.h"
#include "tools/ctl/session.h"

namespace ctl {

// A rule that accelerates whatever it matches, as one of kestrovectl is before its options.
FilterRule freshRule();

void insertRule(const Session& session, const RuleWish& wish);

}  // namespace ctl
