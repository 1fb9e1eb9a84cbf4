// SPDX-License-Identifier: Apache-2.0
// Which operations meet.
#pragma once

#include <string>
#include <vector>

#include "tests/explore/judge.h"

namespace kestrove::explore {

struct Part {
  unsigned number = 1;
  unsigned of = 1;
};

// Runs what a command of the program names, or the part of it. Whether all went as it should.
bool runPlan(Search& search, Judge& judge, const std::string& command, const std::vector<std::string>& names,
             Part part);

}  // namespace kestrove::explore
