// SPDX-License-Identifier: Apache-2.0
// Several requests as one: in their order, up to the first that fails.
#pragma once

#include "tools/api/guard.h"

namespace api {

// {"failed": NUMBER or null, "error": ..., "results": [...]}: what each gave, and the refusal of the one that failed.
// 200 where all went well, the status of the first that failed where nothing was done before it, 207 otherwise.
Reply batch(const Request& request, const Caller& caller);

}  // namespace api
