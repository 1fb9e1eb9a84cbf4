// SPDX-License-Identifier: Apache-2.0
// The change that waits for its confirmation.
#pragma once

#include <optional>
#include <string>

namespace ctl {

struct Pending {
  std::string user;     // who may confirm it
  std::string command;  // that made it
  std::string comment;
  std::string time;        // when
  int revision = 0;        // that it has made; 0 while it is being made
  double secondsLeft = 0;  // until the settings before it come back
};

// Never throws, and costs one call of the system where nothing waits. None, too, where the journal may not be read.
std::optional<Pending> pendingConfirmation();

}  // namespace ctl
