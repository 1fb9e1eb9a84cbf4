// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/program.h"

namespace ctl {
namespace {

Program itself = nullptr;
bool inside = false;

}  // namespace

void setProgram(Program program) { itself = program; }

bool inShell() { return inside; }

int runProgram(const Session& session, const std::vector<std::string>& words) {
  std::vector<std::string> line = words;
  line.insert(line.begin(), "kestrovectl");
  std::vector<char*> pointers;
  for (std::string& word : line) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  inside = true;
  Session own = session;
  return itself(own, static_cast<int>(line.size()), pointers.data());
}

}  // namespace ctl
