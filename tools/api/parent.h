// SPDX-License-Identifier: Apache-2.0
// The process above the workers: it starts them, and starts again what dies.
#pragma once

#include "tools/api/plan.h"
#include "tools/api/socket.h"

namespace api {

// Until a signal ends it, and its workers. Gives the exit status.
int superviseWorkers(const SocketPlace& place, int workers, const Settings& settings);

}  // namespace api
