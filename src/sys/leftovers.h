// SPDX-License-Identifier: Apache-2.0
// Temporary files of a replacement: their names, and what killed processes leave of them.
#pragma once

#include <stddef.h>

namespace kestrove::sys {

// The name of a temporary file for a target, unique to this process and call. False when it would be too long.
[[nodiscard]] bool nameTemporaryFile(char* buffer, size_t size, const char* target);

// Removes the temporary files of a target, in its open directory, that no living process holds locked.
void removeLeftoversIn(int directory, const char* target);

}  // namespace kestrove::sys
