// SPDX-License-Identifier: Apache-2.0
// Two texts as patch programs know their difference.
#pragma once

#include <string>

namespace ctl::preview {

// With three lines around each change; empty when nothing differs. An absent file is named /dev/null by the caller.
std::string unifiedDifference(const std::string& nameBefore, const std::string& before, const std::string& nameAfter,
                              const std::string& after);

}  // namespace ctl::preview
