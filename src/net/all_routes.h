// SPDX-License-Identifier: Apache-2.0
// The route tables as a whole, for the rooms of net/.
#pragma once

namespace kestrove {

// What addAllRoutes() is for IPv4: every IPv6 route that is not disabled comes into the kernel anew and gets its
// status. Under the store lock.
void addAllRoutes6();

}  // namespace kestrove
