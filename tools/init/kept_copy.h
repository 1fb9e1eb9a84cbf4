// SPDX-License-Identifier: Apache-2.0
// A copy of a file beside it.
#pragma once

#include <string>

namespace init {

// Copies PATH to PATH.damaged, or to PATH.damaged.2 and so on where other files have that name; a copy of the same
// content is made once. 0, with the name of the copy, or the error's number.
int keepCopy(const std::string& path, std::string& kept);

}  // namespace init
