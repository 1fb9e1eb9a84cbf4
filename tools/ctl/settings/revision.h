// SPDX-License-Identifier: Apache-2.0
// The settings of a revision of the history.
#pragma once

#include <vector>

#include "tools/ctl/settings/lines.h"

namespace ctl {

// Throws kRefused for a revision that is not kept.
std::vector<SettingLine> revisionLines(int revision);

}  // namespace ctl
