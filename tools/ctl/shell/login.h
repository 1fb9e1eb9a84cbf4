// SPDX-License-Identifier: Apache-2.0
// The log-in at a serial console.
#pragma once

#include <string>

#include "tools/ctl/session.h"

namespace ctl {

// Shows the banner and asks until somebody has logged in, each time a while later than the last: the name; empty when
// the line has no more input. Logs who came, and who did not, as of the serial port.
std::string logIn(const Session& session, double delay);

// What a person sets in the environment is nothing to the programs that a console starts.
void closeEnvironment(const std::string& user);

}  // namespace ctl
