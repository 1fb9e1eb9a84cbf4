// SPDX-License-Identifier: Apache-2.0
// The appliance's /dev.
#pragma once

namespace kestrove::sandbox {

// Makes it on the stage.
void makeDevices();

}  // namespace kestrove::sandbox
