// SPDX-License-Identifier: Apache-2.0
// The counters as Prometheus takes them.
#pragma once

#include "tools/api/guard.h"

namespace api {

// Text format 0.0.4, 200 also where the store cannot be read: kestrove_up says so.
Reply metrics(const Request& request, const Caller& caller);

}  // namespace api
