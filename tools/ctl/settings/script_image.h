// SPDX-License-Identifier: Apache-2.0
// The store that a script of commands leads to.
#pragma once

#include <string>

#include "tools/ctl/settings/image.h"

namespace ctl {

// What the attached store would be with exactly the settings of the script. Throws kUsage with the line of what is
// wrong in it.
Image scriptImage(const Session& session, const std::string& path);

}  // namespace ctl
