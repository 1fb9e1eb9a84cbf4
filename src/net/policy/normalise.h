// SPDX-License-Identifier: Apache-2.0
// Bringing a rule into the form in which the table keeps it, in place, step by step.
#pragma once

#include "kestrove/layout.h"

namespace kestrove {

// Zeroes the addresses of the families that the rule does not match.
void clearOtherFamilies(FilterRule& rule);

// Whether an IPv4 rule's masks are netmasks; rules of other families have none to check.
bool masksAreValid(const FilterRule& rule);

// Lifts the rate limit to the least that the unit accepts.
void raiseBandwidth(FilterRule& rule);

// Reduces the addresses of an active rule to their networks and takes UDP off the acceleration.
void reduceActiveRule(FilterRule& rule);

}  // namespace kestrove
