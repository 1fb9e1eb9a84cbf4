// SPDX-License-Identifier: Apache-2.0
// What may stand in a command line: the checkpoint in front of the shell.
#pragma once

#include <string_view>

namespace kestrove::sys {

// Up to 15 letters, digits and . _ - : @ without a "-" at the head, or up to 16 of them, a dot and the number of a
// VLAN. An empty name is plain: its line fails in the program that it is for.
bool plainInterface(std::string_view name);

// The same characters, without a limit.
bool plainName(std::string_view name);

// An address, a subnet or a blank-separated list of them: hexadecimal digits and . : / and blanks, or empty.
bool plainAddress(std::string_view text);

// Absolute, of letters, digits and / . _ - + : @
bool plainPath(std::string_view path);

// The decimal number of a process that may be signalled, 2 or more, or empty.
bool plainPid(std::string_view pid);

}  // namespace kestrove::sys
