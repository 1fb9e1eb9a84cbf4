// SPDX-License-Identifier: Apache-2.0
// Whether a management address can be on its interface, and putting it there. Under the store lock; neither takes it.
#pragma once

#include "kestrove/layout.h"

namespace kestrove {

// In the given operating mode. An interface that the mode does not use keeps its addresses without having them.
uint32_t addressStatus(uint32_t mode, int32_t interfaceKind);

// False when its interface has no name or the kernel refuses; a refusal by netlink's acknowledgement does not count.
[[nodiscard]] bool applyAddress(const ManagementAddress& entry);

}  // namespace kestrove
