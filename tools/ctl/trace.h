// What a system-call trace says of a command's effects.
#pragma once

#include <string>
#include <vector>

namespace ctl {

struct Effect {
  std::string kind;  // "shell", "program", "ioctl", "netlink", "signal"
  std::string text;
};

// The effects in an strace log, in order: shell lines, programs, requests that change interfaces, routes, ARP and
// bridges, routing netlink messages, signals. Look-ups are left out.
std::vector<Effect> effectsOf(const std::string& trace);

}  // namespace ctl
