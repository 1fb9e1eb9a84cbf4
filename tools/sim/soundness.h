// SPDX-License-Identifier: Apache-2.0
// Whether a snapshot keeps its promises.
#pragma once

#include <string>
#include <vector>

#include "kestrove/engine.h"

namespace sim {

// What is wrong with the snapshot, one sentence each; nothing for a sound one.
std::vector<std::string> findings(const EngineConfiguration& block);

}  // namespace sim
