// SPDX-License-Identifier: Apache-2.0
// Results for scripts: a record a line, its values with a colon between them.
#pragma once

#include <string>

#include "tools/ctl/session.h"

namespace ctl {

// No heading. In a value "\" and ":" have a backslash before them and control characters are "\x0a"; null is empty, a
// list has commas, and what has members of its own is JSON in one line. A record has the members of all, so that each
// value keeps its place.
std::string terseText(const Json& result);

}  // namespace ctl
