// SPDX-License-Identifier: Apache-2.0
// The log-in check without the lock.
#pragma once

namespace kestrove {

// 1 when the user is in the password database, the table has a name that begins with the given one, and the password
// is right (a null or empty one is not asked for); otherwise 0 with SHM_ENOUSER or SHM_EPASSWORD. Under the store lock.
[[nodiscard]] int checkLogin(const char* name, const char* password);

}  // namespace kestrove
