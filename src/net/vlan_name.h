// SPDX-License-Identifier: Apache-2.0
// The name of a VLAN interface, for the rooms of net/.
#pragma once

#include <stdint.h>
#include <stdio.h>

namespace kestrove {

// Whole, also where it is longer than the kernel takes: cut, it might be that of another interface. The id is printed
// as a signed number.
struct VlanName {
  VlanName() = default;
  VlanName(const char (&base)[16], uint32_t id) {
    snprintf(text, sizeof text, "%.*s.%d", static_cast<int>(sizeof base), base, static_cast<int32_t>(id));
  }
  char text[16 + sizeof ".-2147483648"] = "";
};

}  // namespace kestrove
