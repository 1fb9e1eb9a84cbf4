// SPDX-License-Identifier: Apache-2.0
// What even root may not do in the appliance.
#pragma once

namespace kestrove::sandbox {

// Gives up, for this process and all that it starts, the privileges whose effects no namespace holds back: the clock,
// kernel modules, raw ports, device nodes, the machine's power.
void dropPrivileges();

}  // namespace kestrove::sandbox
