// SPDX-License-Identifier: Apache-2.0
// The part of explain that runs in the sandbox.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/session.h"

namespace ctl {

// Makes the store of this sandbox from an image, brings the appliance up as the image says, runs a kestrovectl command
// and prints what it did: {"exit": STATUS, "effects": [{"kind", "effect", "result"}]}. What the command itself prints
// goes to standard error.
void explainInside(const Session& session, const std::string& imagePath, const std::vector<std::string>& command);

}  // namespace ctl
