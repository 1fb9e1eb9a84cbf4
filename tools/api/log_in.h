// SPDX-License-Identifier: Apache-2.0
// Coming in, and going out.
#pragma once

#include "tools/api/guard.h"

namespace api {

// In a process of its own: the password is gone with it. 401 for everything that is wrong with name or password, 429
// for who comes too soon after a failure.
Reply logIn(const Request& request);

// In a process of its own: it may have to wait for the store, which no longer names the session.
Reply logOut(const Caller& caller);

// {"user", "role", "csrf", "secondsLeft"}; of a token without the last two.
Reply sessionReply(const Caller& caller);

}  // namespace api
