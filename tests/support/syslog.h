// SPDX-License-Identifier: Apache-2.0
// What reached the sandbox's syslog collector.
#pragma once

#include <string>
#include <vector>

namespace kestrove::testing {

// Messages since the start or the last clear, in order, each as "level: text" with the level's name (err, warning,
// notice, info, debug). Everything that this process sent before the call is there.
std::vector<std::string> syslogLines();
void clearSyslog();
// How many of them have these words.
long timesLogged(const std::string& words);

}  // namespace kestrove::testing
