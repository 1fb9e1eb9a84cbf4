// SPDX-License-Identifier: Apache-2.0
// When a process began: tells it from another that got its number later.
#pragma once

namespace tools {

// In ticks since the machine was started. 0 when there is no such process.
unsigned long long startTimeOf(int pid);

}  // namespace tools
