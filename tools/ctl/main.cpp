// SPDX-License-Identifier: Apache-2.0
// kestrovectl: the appliance's store from the command line.
#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "tools/common/standard_output.h"
#include "tools/common/version_text.h"
#include "tools/ctl/script/run_line.h"
#include "tools/ctl/shell/shell.h"

namespace {

// Without words the shell, and with "-" for them the lines of standard input.
std::optional<int> runShell(const ctl::Session& session, const std::vector<std::string>& words) {
  if (words.empty()) return ctl::shellWithoutCommand(session);
  if (words.size() != 1 || words[0] != "-") return std::nullopt;
  return ctl::Shell(session).readAll();
}

}  // namespace

int main(int argc, char** argv) {
  ctl::Session session;
  session.out = tools::takeStandardOutput();
  const std::string otherLibrary = tools::libraryRefusal();
  if (!otherLibrary.empty()) return ctl::report(session, ctl::Refusal(ctl::kNoStore, otherLibrary));
  if (const char* user = getenv("USER")) session.user = user;
  const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  if (const std::optional<int> status = runShell(session, words)) return *status;
  return ctl::runWords(session, words);
}
