// SPDX-License-Identifier: Apache-2.0
// The appliance's ports and the hosts behind them.
#pragma once

namespace kestrove::sandbox {

void raiseLoopback();

// Gives this network namespace eth0, eth1 and eth2, each with a host in a network namespace of its own behind it. To be
// called before the root is mounted: the hosts' names are laid onto the stage.
void openPorts();

}  // namespace kestrove::sandbox
