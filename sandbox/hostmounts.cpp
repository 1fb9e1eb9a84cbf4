// SPDX-License-Identifier: Apache-2.0
#include "sandbox/hostmounts.h"

#include <stdio.h>

#include <algorithm>

#include "sandbox/stage.h"
#include "sys/stream.h"

namespace kestrove::sandbox {
namespace {

// The kernel writes blanks and the like as a backslash and three octal digits.
std::string unescape(const char* text) {
  std::string result;
  for (const char* c = text; *c; ++c) {
    unsigned code = 0;
    if (*c == '\\' && sscanf(c + 1, "%3o", &code) == 1) {
      result += static_cast<char>(code);
      c += 3;
    } else {
      result += *c;
    }
  }
  return result;
}

}  // namespace

std::vector<std::string> hostMounts() {
  std::vector<std::string> found;
  sys::Stream table(fopen("/proc/self/mountinfo", "re"));
  char line[4096];
  char point[4096];
  while (table && fgets(line, sizeof line, table.get())) {
    if (sscanf(line, "%*d %*d %*s %*s %4095s", point) != 1) continue;
    std::string path = unescape(point);
    if (path != "/" && !isOwn(path)) found.push_back(path);
  }
  std::sort(found.begin(), found.end());
  found.erase(std::unique(found.begin(), found.end()), found.end());
  return found;
}

}  // namespace kestrove::sandbox
