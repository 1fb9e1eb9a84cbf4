// SPDX-License-Identifier: Apache-2.0
// The tables of the store filled to the last slot.
#pragma once

#include "kestrove/kestrove.h"

namespace bench {

// The n-th of a full table. Routes are in list order, as a file has them: of IPv4 destinations the last byte counts
// most.
RouteEntry routeAt(uint32_t n);
Route6Entry route6At(uint32_t n);
FilterRule ruleAt(uint32_t n);

// Both families, each route in the slot of its place.
void fillRoutes();

// As many rules as asked for, the last of which stands in the default rule's place.
void fillRules(int32_t count = SHM_RULES);

// Each event seven seconds behind the one before.
void fillEvents();

}  // namespace bench
