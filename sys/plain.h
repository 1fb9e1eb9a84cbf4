// What may stand in a command line: the checkpoint in front of the shell.
#pragma once

#include <string_view>

namespace kestrove::sys {

// 1 to 27 letters, digits and . _ - : @ (an interface of 15 characters, a dot and a VLAN id).
bool plainInterface(std::string_view name);

// The same characters, one at least, without a limit.
bool plainName(std::string_view name);

// An address, a subnet or a blank-separated list of them: hexadecimal digits and . : / and blanks, or empty.
bool plainAddress(std::string_view text);

// Absolute, of letters, digits and / . _ - + : = @ %
bool plainPath(std::string_view path);

// Decimal digits, or empty.
bool plainPid(std::string_view pid);

}  // namespace kestrove::sys
