// SPDX-License-Identifier: Apache-2.0
// One thing that a command does outside the store.
#pragma once

#include <string>

namespace ctl {

struct Effect {
  std::string kind;    // "shell", "program", "ioctl", "netlink", "signal", "file"
  std::string text;    // the line, the words, the request in words
  std::string result;  // the kernel's answer: a number, or the name of the error
};

}  // namespace ctl
