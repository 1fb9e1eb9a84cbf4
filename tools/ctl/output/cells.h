// SPDX-License-Identifier: Apache-2.0
// Results as texts: one value of a cell, one table of a list of objects.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/session.h"

namespace ctl {

// A list of objects.
bool isTable(const Json& value);
bool isNested(const Json& value);  // takes lines of its own

// As people read it: "yes" and "no", "-" for what is absent, a list with commas; control characters escaped.
std::string cellText(const Json& value);

// The names of all members of all rows, in the order in which they come up.
std::vector<std::string> columnNames(const Json& table);

}  // namespace ctl
