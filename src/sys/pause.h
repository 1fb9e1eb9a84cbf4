// SPDX-License-Identifier: Apache-2.0
// Waiting.
#pragma once

namespace kestrove::sys {

// Waits the whole time, signals or not.
void pauseSeconds(unsigned seconds);

}  // namespace kestrove::sys
