// SPDX-License-Identifier: Apache-2.0
// How long nobody is heard behind a log-in that failed. No connection is kept waiting for it: who guesses would hold as
// many as the server has. Whoever comes too early is told when to come again, whichever worker hears it.
#pragma once

#include <string>

namespace api {

constexpr char kFailureFolder[] = "/run/kestrove/failures";

// Seconds until this client, or this user, is heard again; 0 where it is now.
double secondsToWait(const std::string& client, const std::string& user);

// A second behind the first failure, twice as long behind each further one: 30 seconds at most for a client, 4 for a
// user, whom somebody else's guesses must not keep out.
void noteFailure(const std::string& client, const std::string& user);
void forgetFailures(const std::string& client, const std::string& user);

}  // namespace api
