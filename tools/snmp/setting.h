// SPDX-License-Identifier: Apache-2.0
// Setting a scalar: what may be set, and what the library says of the value.
#pragma once

#include <span>

#include "tools/snmp/tree.h"

namespace snmp {

// A refusal of a set, as the protocol numbers it; 0 for none.
using Refused = int;

constexpr char kUser[] = "snmp";  // behind every event of this program

// Whether the object may be set at all, and to a value of this type and length.
Refused check(const Found& found, int type, size_t length, const ShmData& store);

// Through the library, with an event of that source where the item has one. Numbers come as a long.
Refused set(const Found& found, std::span<const uint8_t> value, uint32_t source);

}  // namespace snmp
