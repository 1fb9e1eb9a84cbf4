// SPDX-License-Identifier: Apache-2.0
// The operating modes and the events that move between them, which kestrove/codes.h names.
#pragma once

#include <stdint.h>

#include "kestrove/codes.h"

namespace kestrove::opmode {

constexpr uint32_t kModes = 3;

// Whether the mode has a transition for the event.
bool handles(uint32_t mode, int event);

}  // namespace kestrove::opmode
