// SPDX-License-Identifier: Apache-2.0
// The two sides that policy routing leads apart.
#pragma once

#include "tests/support/addresses.h"
#include "tests/support/ports.h"
#include "tests/support/store.h"

namespace kestrove::testing {

// LAN VLAN 12 on eth0 with its gateway at 10.1.2.254, the WAN on eth1 with its gateway at 172.16.9.1.
class PolicyTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    namePorts("eth0", "eth1", "");
    numberVlans(12, 13);
    shm->config.lanGateway = quad("10.1.2.254");
    shm->config.lanIpAddressMask = quad("255.255.255.0");
    shm->config.wanGateway = quad("172.16.9.1");
    shm->config.wanIpAddressMask = quad("255.255.0.0");
  }
};

}  // namespace kestrove::testing
