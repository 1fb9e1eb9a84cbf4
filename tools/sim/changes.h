// SPDX-License-Identifier: Apache-2.0
// What changed, in words.
#pragma once

#include <string>
#include <vector>

#include "kestrove/engine.h"

namespace sim {

// The names of the change bits, comma-separated; a bit without a name as its number.
std::string namesOfBits(uint32_t bits);

// One line for each setting that differs, old and new value, and one for the rules.
std::vector<std::string> differences(const EngineConfiguration& before, const EngineConfiguration& after);

}  // namespace sim
