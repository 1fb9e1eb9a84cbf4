// SPDX-License-Identifier: Apache-2.0
// The two halves of preview: what is carried into the sandbox, and what is done there.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/session.h"

namespace ctl::preview {

// Puts the attached store, the appliance's own files and its kernel state into the folder.
void exportAppliance(const Session& session, const std::string& folder);

// In the sandbox: makes an appliance of the folder, runs a kestrovectl command on it and gives what differs then:
// {"exit", "store", "files": [{"path", "before", "after"}], "kernel": [{"section", "before", "after"}], "notes"}. What
// the command itself prints goes to standard error.
Json tryCommand(const std::string& folder, const std::vector<std::string>& command);

}  // namespace ctl::preview
