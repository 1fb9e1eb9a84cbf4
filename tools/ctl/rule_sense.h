// SPDX-License-Identifier: Apache-2.0
// What a rule of a store may hold and nobody means.
#pragma once

#include <string>

#include "kestrove/layout.h"

namespace ctl {

// Why its ports match nothing that there is; empty where they do.
std::string senselessPorts(const FilterRule& rule);

// Why a number of the rule that the other one does not have says nothing; empty where all of them do.
std::string senselessNumber(const FilterRule& rule, const FilterRule& other);

// Whether a line that makes it has to say --as-is.
bool isSenseless(const FilterRule& rule);

}  // namespace ctl
