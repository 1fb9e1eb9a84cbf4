// SPDX-License-Identifier: Apache-2.0
// The archive for a support engineer, on its way to the browser.
#pragma once

#include "tools/api/carry_out.h"

namespace api {

// A reply with a file, which is gone once it is open.
Reply support(const Request& request, const Route& route, const Caller& caller);

}  // namespace api
