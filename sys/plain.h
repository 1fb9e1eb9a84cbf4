// What may stand in a command line: the checkpoint in front of the shell.
#pragma once

#include <string_view>

namespace kestrove::sys {

// 1 to 15 letters, digits and . _ - : @, or up to 16 of them, a dot and the digits of a VLAN id.
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
