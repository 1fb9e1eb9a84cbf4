// SPDX-License-Identifier: Apache-2.0
// The physical ports in the configuration.
#pragma once

#include <string.h>

#include "kestrove/kestrove.h"

namespace kestrove::testing {

// The base is the port whose VLANs are the LAN's and the WAN's.
inline void namePorts(const char* base, const char* lan, const char* wan) {
  strcpy(shm->config.bridgeRouterPhysicalName, base);
  strcpy(shm->config.physicalLanInterfaceName, lan);
  strcpy(shm->config.physicalWanInterfaceName, wan);
}

inline void numberVlans(uint32_t lan, uint32_t wan) {
  shm->config.lanVlanId = lan;
  shm->config.wanVlanId = wan;
}

}  // namespace kestrove::testing
