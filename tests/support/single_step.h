// SPDX-License-Identifier: Apache-2.0
// Work followed instruction by instruction.
//
// The work runs in a child process that is stopped after each of its instructions, those of the C library too. The
// store is shared, so whoever looks on sees what the next process would see if the child died at that instant.
#pragma once

#include <functional>

namespace kestrove::testing {

struct Steps {
  long count = 0;         // instructions made
  bool finished = false;  // the work came back
};

// Calls look() before the first instruction and after each; when it gives false, the child is killed right there.
Steps singleStep(const std::function<void()>& work, const std::function<bool()>& look);

}  // namespace kestrove::testing
