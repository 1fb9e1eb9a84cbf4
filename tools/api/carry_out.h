// SPDX-License-Identifier: Apache-2.0
// Runs the command that a request stands for, and says what came of it.
#pragma once

#include <optional>

#include "tools/api/guard.h"
#include "tools/api/words.h"

namespace api {

// As a command's exit status is answered: {200, ...}. Revisions and rows that are not there are told by the route.
int statusOf(int exit, const Json& error, const Route& route);

// The reply to a look at a table that is known to be as it was; made without the lock.
std::optional<Reply> knownReply(const Request& request, const Route& route);

// The same to a look at counters and processes that was made within the last second: for who asks while somebody
// else has the store.
std::optional<Reply> lastReply(const Request& request, const Route& route);

// Keeps what a look at a table would say now, where it is one that is kept and has not been looked at
// since the store changed.
void lookAhead(const Route& route);

// In this process. The input, where there is some, takes the place of its standard input.
Reply carryOut(const Request& request, const Route& route, const Caller& caller);

}  // namespace api
