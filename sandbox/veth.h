// Pairs of virtual Ethernet ports.
#pragma once

#include <stdint.h>

#include <array>

namespace kestrove::sandbox {

using Mac = std::array<uint8_t, 6>;

struct VethEnd {
  const char* name;
  Mac mac;
};

// Makes a pair with its first end in this process's network namespace and the other in the one given.
void addVeth(const VethEnd& here, const VethEnd& there, int otherNetwork);

}  // namespace kestrove::sandbox
