// SPDX-License-Identifier: Apache-2.0
// What the operational state allows. To be asked while the store is attached.
#pragma once

#include "kestrove/segment.h"

namespace kestrove {

inline bool configurationMode() { return shm->operationalState == SHM_STATE_CONFIGURATION; }
inline bool debugMode() { return shm->operationalState == SHM_STATE_DEBUG; }

}  // namespace kestrove
