// SPDX-License-Identifier: Apache-2.0
// The lease file that the client leaves.
#pragma once

#include <stdio.h>

#include "kestrove/dhcp.h"

namespace kestrove {

// Hands every line's kind and value to the callback (null: to nobody). Lines are read in pieces of 119 characters.
void readLease(FILE* file, DhcpCallback callback, uint32_t* kind);

}  // namespace kestrove
