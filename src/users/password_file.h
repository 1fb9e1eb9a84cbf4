// SPDX-License-Identifier: Apache-2.0
// The system's password file, as far as users of the appliance come and go in it. To be used under the store lock; the
// system's own lock of the file is taken here.
#pragma once

#include <string_view>

namespace kestrove {

// Appends a line for the user, with a user number that is free. 0, or -1 with SHM_EOPEN and the file as it was.
[[nodiscard]] int appendPasswordLine(const char* name, const char* hash);

// Rewrites the file without the lines of that name. 0, or -1 with SHM_EOPEN and the file as it was.
[[nodiscard]] int removePasswordLines(std::string_view name);

}  // namespace kestrove
