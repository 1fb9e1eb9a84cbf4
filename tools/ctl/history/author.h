// SPDX-License-Identifier: Apache-2.0
// Who makes a change, and with which command: what revisions and the journal say of it.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/session.h"

namespace ctl {

// The user who logged in, whoever this process has become since: the session's own log-in, the log-in that the kernel
// remembers, the owner of the terminal, the effective user. "uid 1007" where the password file has no name.
std::string logInUser(const Session& session);

// The front end, as events name it: "System", "Serial".
std::string sourceName(const Session& session);

// The command as it can be given again, without what belongs to this run alone (--json, --wait, --comment ...) and
// without secrets.
std::string commandText(const std::vector<std::string>& words);

}  // namespace ctl
