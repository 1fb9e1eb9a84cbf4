// SPDX-License-Identifier: Apache-2.0
// kestrovectl: the appliance's store from the command line.
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "tools/common/plain_text.h"
#include "tools/common/standard_output.h"
#include "tools/ctl/script/run_line.h"

namespace {

bool asksForJson(const std::vector<std::string>& words) {
  return std::find(words.begin(), words.end(), "--json") != words.end();
}

// Without words, or with "-" for them, the lines come from standard input.
bool readsLines(const std::vector<std::string>& words) {
  if (words.empty()) return isatty(STDIN_FILENO) == 0;
  return words.size() == 1 && words[0] == "-";
}

}  // namespace

int main(int argc, char** argv) {
  ctl::Session session;
  session.out = tools::takeStandardOutput();
  if (const char* user = getenv("USER")) session.user = user;
  const std::vector<std::string> words(argv + (argc > 0 ? 1 : 0), argv + argc);
  std::string refused = tools::refusedWord(argc, argv);
  if (refused.empty() && tools::hasControlCharacter(session.user)) refused = "USER holds a control character";
  if (!refused.empty()) {
    session.json = asksForJson(words);
    return ctl::report(session, ctl::kUsage, refused);
  }
  return readsLines(words) ? ctl::runLines(session, stdin) : ctl::runWords(session, words);
}
