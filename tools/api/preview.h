// SPDX-License-Identifier: Apache-2.0
// What a change would make different, found out on a copy of the appliance.
#pragma once

#include "tools/api/guard.h"

namespace api {

// The body is the change as a batch has it. 200 where it could be tried; its own end stands in "exit".
Reply preview(const Request& request, const Caller& caller);

}  // namespace api
