// SPDX-License-Identifier: Apache-2.0
// Putting addresses and routes back after the interfaces were rebuilt.
#pragma once

namespace kestrove::opmode {

// Both under the store lock.
void reapplyBridgeAddresses6();
void reapplyRoutes();  // of both tables

}  // namespace kestrove::opmode
