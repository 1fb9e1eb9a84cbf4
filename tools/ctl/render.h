// SPDX-License-Identifier: Apache-2.0
// JSON for a human reader.
#pragma once

#include <string>

#include "tools/ctl/session.h"

namespace ctl {

// Objects become aligned "name  value" lines, lists of objects become tables, nested ones are indented.
std::string render(const Json& value);

}  // namespace ctl
