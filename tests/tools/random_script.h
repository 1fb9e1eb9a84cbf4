// SPDX-License-Identifier: Apache-2.0
// Scripts drawn by lot, of every line that a saved one can hold and of some that the store refuses.
#pragma once

#include <cstdlib>
#include <string>

namespace kestrove::testing {

// Lines that each make sense by themselves; few addresses, routes and rules, so that many lines mean the same ones.
std::string drawScript(unsigned seed);

// How many times a property is tried: few where it is one of many tests, as many as KESTROVE_SCRIPT_ROUNDS says
// otherwise.
inline unsigned scriptRounds(unsigned usual) {
  const char* asked = getenv("KESTROVE_SCRIPT_ROUNDS");
  return asked ? static_cast<unsigned>(atoi(asked)) : usual;
}

}  // namespace kestrove::testing
