// SPDX-License-Identifier: Apache-2.0
// The library's dump of the store, safe to print.
#pragma once

#include <string>

namespace ctl {

// The whole dump, with the control characters that texts of the store hold escaped, so that none becomes a line of its
// own. Throws a Refusal when the store cannot be read.
std::string dumpText();

}  // namespace ctl
