// SPDX-License-Identifier: Apache-2.0
// Watches what a command does outside itself.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/trace/effect.h"

namespace ctl {

struct Trace {
  int status = 0;  // as the shell counts: the exit status, or 128 and the number of the signal that ended it
  std::vector<Effect> effects;
};

// Runs a program of this program's width, its path first, and gives its effects in the order in which they were begun:
// shell lines, programs, requests that change interfaces, routes, ARP and bridges, routing netlink messages, signals,
// files that it writes itself.
// What a started program does in its turn belongs to its line and is not looked at. Signals are held back: where this
// runs, the number belongs to another process than the one that is meant. Throws a Refusal when it cannot watch.
Trace traceProgram(std::vector<std::string> words);

}  // namespace ctl
