// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/ask.h"

#include <unistd.h>

#include <cstdio>

#include "tools/ctl/session.h"

namespace ctl {
namespace {

// Byte by byte: what follows the line is another reader's.
std::string answerLine() {
  std::string line;
  for (char c; read(STDIN_FILENO, &c, 1) == 1 && c != '\n';) line += c;
  return line;
}

}  // namespace

bool canAsk() { return isatty(STDIN_FILENO) && isatty(STDERR_FILENO); }

bool agrees(const std::string& question) {
  fprintf(stderr, "%s [y/N] ", question.c_str());
  const std::string answer = answerLine();
  return answer == "y" || answer == "Y" || answer == "yes";
}

void requireAgreement(bool yes, const std::string& command, const std::string& question) {
  if (yes) return;
  if (!canAsk()) throw Refusal(kUsage, command + ": nobody can be asked here, so it needs --yes; nothing is changed");
  if (!agrees(question)) throw Refusal(kRefused, command + ": not agreed to; nothing is changed");
}

}  // namespace ctl
