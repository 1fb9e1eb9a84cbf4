// SPDX-License-Identifier: Apache-2.0
// A command of kestrovectl, run in this process with what it prints kept.
#pragma once

#include <string>
#include <vector>

#include "tools/api/guard.h"

namespace api {

struct Printed {
  int exit = 0;
  std::string text;
};

// For a request of the caller's: JSON, two seconds for the store, and the comment and confirmation of the query.
ctl::Session sessionOf(const Request& request, const Caller& caller);

Printed run(ctl::Session session, const std::vector<std::string>& words);

// What the library says of a wrong password in the system log has the password in it. For the rest of this process.
void logNoPasswords();

// Takes the place of standard input. Secrets come the way on which a person's would: nothing of them is in the words.
void giveInput(const std::string& input);

}  // namespace api
