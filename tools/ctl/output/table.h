// SPDX-License-Identifier: Apache-2.0
// A list of objects as a table that fits a screen.
#pragma once

#include <optional>
#include <string>

#include "tools/ctl/session.h"

namespace ctl {

// With a line for each row, none longer than the columns (0: no limit). What is too wide gives way in this order: the
// second blank between columns; headings that are wider than what stands below them, the longest first, down to 4
// characters; texts, the widest column first and of two the one further right, down to 8 characters, with a mark at the
// cut. Numbers are never cut. Nothing where all this is not enough.
std::optional<std::string> tableText(const Json& table, size_t columns);

}  // namespace ctl
