// SPDX-License-Identifier: Apache-2.0
// Who waits for a lock of a file.
#pragma once

#include <vector>

namespace ctl {

// The processes in the kernel's queue behind one that holds a whole file.
std::vector<int> waitersBehind(int pid);

}  // namespace ctl
