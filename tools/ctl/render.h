// SPDX-License-Identifier: Apache-2.0
// JSON for a human reader.
#pragma once

#include <string>

#include "tools/ctl/session.h"

namespace ctl {

// Objects become aligned "name  value" lines, lists of objects become tables, nested ones are indented. With columns
// (0: no limit) tables are made to fit; below 60 columns, and where a table cannot be made to fit, each row becomes
// such lines, with an empty line between two. In these nothing is cut: a long value goes on below itself, broken at
// blanks.
std::string render(const Json& value, size_t columns = 0);

}  // namespace ctl
