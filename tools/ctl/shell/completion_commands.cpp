// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/completion.h"

#include <cstdlib>

#include "completion_script.h"
#include "tools/ctl/shell/candidates.h"

namespace ctl {
namespace {

void print(const Session& session, const char* script) {
  if (!session.forPeople()) return session.show({{"script", script}});
  session.print(script);
}
void bash(const Session& session) { print(session, kBashCompletion); }
void zsh(const Session& session) { print(session, kZshCompletion); }

// Behind the program's own name.
void completeLine(const Session& session) {
  const char* line = getenv("KESTROVECTL_LINE");
  const TypedLine typed(line ? line : "");
  Words before = typed.before();
  if (!before.empty()) before.erase(before.begin());
  std::string answer = takesFile(before) ? "files\n" : "words\n";
  for (const Candidate& one : candidates(before, typed.typed().text, false)) answer += one.word + "\n";
  session.print(answer);
}

}  // namespace

std::vector<Command> completionCommands() {
  Command asking = command("complete-line", "", completeLine);
  asking.hidden = true;
  Command forBash = command("completion bash", "Print the script for bash", bash);
  forBash.more = "An installation has it where bash-completion looks. Elsewhere: source <(kestrovectl completion bash)";
  Command forZsh = command("completion zsh", "Print the script for zsh", zsh);
  forZsh.more =
      "An installation has it where zsh looks. Elsewhere, behind compinit: source <(kestrovectl completion zsh)";
  return {group("completion", "Completion of command lines by other shells"), forBash, forZsh, asking};
}

}  // namespace ctl
