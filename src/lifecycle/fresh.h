// SPDX-License-Identifier: Apache-2.0
// What a segment holds before any file is read into it.
#pragma once

#include "kestrove/layout.h"

namespace kestrove {

// Both route tables of a new segment: every slot free, both lists without an entry.
void layOutRouteTables();

// The rule table with its default rule alone. Its bandwidth is minRate, so that has to be set before.
void resetRuleTable();

}  // namespace kestrove
