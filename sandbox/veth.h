// SPDX-License-Identifier: Apache-2.0
// Pairs of virtual Ethernet ports.
#pragma once

#include <stdint.h>

#include <array>

namespace kestrove::sandbox {

using Mac = std::array<uint8_t, 6>;

// Two ends with one index would look like an ordinary port to the kernel, which tells others of its carrier a second
// late.
struct VethEnd {
  const char* name;
  int index;
  Mac mac;
};

// Makes a pair with its first end in this process's network namespace and the other in the one given.
void addVeth(const VethEnd& here, const VethEnd& there, int otherNetwork);

}  // namespace kestrove::sandbox
