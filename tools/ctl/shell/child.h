// SPDX-License-Identifier: Apache-2.0
// Work in a process of its own: each command finds a fresh one, whatever it leaves behind, and Ctrl-C ends it alone.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

namespace ctl {

// Gives back what the work returns, or 128 and the number of the signal that ended it. A Refusal of the work is printed
// and gives its exit.
int inChild(const std::function<int()>& work);

// The same, whose output goes through the function piece by piece. Where that gives false nobody wants more: the
// process is ended by what it writes next.
int inChild(const std::function<int(FILE*)>& work, const std::function<bool(const std::string&)>& output);

// A text that is found out in a process of its own; empty when that failed.
std::string textFromChild(const std::function<std::string()>& work);

}  // namespace ctl
