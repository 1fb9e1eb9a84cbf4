// SPDX-License-Identifier: Apache-2.0
// Commands that only read.
#pragma once

#include <functional>

#include "tools/ctl/session.h"

namespace ctl {

// Gathers with the store held, so that nobody changes it meanwhile, and prints when it is free again: a reader of the
// output that takes its time keeps nobody waiting.
Json gather(const Session& session, const std::function<Json()>& rows);
void showRead(const Session& session, const std::function<Json()>& rows);

// The same as a handler of the grammar.
template <Json (*rows)()>
void showing(const Session& session) {
  showRead(session, rows);
}

}  // namespace ctl
