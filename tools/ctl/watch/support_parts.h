// SPDX-License-Identifier: Apache-2.0
// What a support archive holds.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/ctl/session.h"
#include "tools/ctl/watch/scrubber.h"

namespace ctl {

struct SupportPart {
  std::string name;                   // of its file in the archive
  std::function<std::string()> text;  // without secrets; throws a Refusal where it cannot be had
};

// Learns the secrets of this appliance first. The session and the scrubber outlive the parts.
std::vector<SupportPart> supportParts(const Session& session, Scrubber& scrubber);

}  // namespace ctl
