// Putting addresses and routes back after the interfaces were rebuilt.
#pragma once

namespace kestrove::opmode {

// The IPv6 addresses on the bridge, then both route tables. Under the store lock.
void reapplyAddressesAndRoutes();

}  // namespace kestrove::opmode
