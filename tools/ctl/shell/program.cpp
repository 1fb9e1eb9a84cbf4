// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/program.h"

#include "tools/ctl/script/run_line.h"

namespace ctl {
namespace {

bool inside = false;

}  // namespace

bool inShell() { return inside; }

int runProgram(const Session& session, const std::vector<std::string>& words) {
  inside = true;
  return runWords(session, words);
}

}  // namespace ctl
