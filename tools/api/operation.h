// SPDX-License-Identifier: Apache-2.0
// A request within a request: {"method", "path", "body", "ifMatch"}, the path below /api/1, with its query.
#pragma once

#include "tools/api/guard.h"
#include "tools/api/words.h"

namespace api {

struct Operation {
  Request request;
  Route route;
};

// Throws for what is no request of a command, or none that the caller may make.
Operation operationOf(const Json& given, const Request& whole, const Caller& caller);

}  // namespace api
