// SPDX-License-Identifier: Apache-2.0
// What is to be done for a request: told at once, or work that may wait for the store.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "kestrove/layout.h"
#include "tools/api/message.h"

namespace api {

constexpr size_t kLongestBody = 1 << 20;
constexpr size_t kLongestScript = 4 << 20;  // all rules with all they can have are less than three

struct Settings {
  std::vector<std::string> names;  // by which the appliance is called beside its own
};

struct Plan {
  std::optional<Reply> reply;        // where all is said
  std::function<Reply()> work = {};  // otherwise; never throws
  bool own = false;                  // in a process of its own: it changes something, or lasts
  // What may be said instead while somebody else has the store, where that is known.
  std::function<std::optional<Reply>()> meanwhile = [] { return std::nullopt; };
};

// What the body of a request may have: a script is long, and is taken from nobody who may not apply it.
size_t longestBody(const Request& request, const Settings& settings);

// 413: that is what it may have.
Reply tooLong(size_t most);

// Looks at the request alone, and at the store without its lock.
Plan plan(const Request& request, const Settings& settings);

// The same with a store of the caller's.
Plan planOn(const ShmData& store, const Request& request, const Settings& settings);

// Looks once behind each change of the store at the tables that are kept, unless somebody has it: who asks
// for one while somebody does is answered nevertheless.
void freshenTables();

// The first, done to the end: without a socket.
Reply answer(const Request& request, const Settings& settings = {});

}  // namespace api
