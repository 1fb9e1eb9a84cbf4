// SPDX-License-Identifier: Apache-2.0
// help: of the program or of a command, and the manual.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "CLI/CLI.hpp"
#include "tools/common/program.h"
#include "tools/ctl/command_line.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/manual.h"
#include "tools/ctl/script/help_text.h"
#include "tools/ctl/usage.h"

namespace ctl {
namespace {

struct HelpLine {
  std::vector<std::string> words;
  bool manual = false;
};

bool nameCommand(const std::vector<std::string>& words) {
  return std::any_of(grammar().begin(), grammar().end(), [&words](const Command& row) {
    return row.words.size() >= words.size() && std::equal(words.begin(), words.end(), row.words.begin());
  });
}

// Of a command, an item or a word that commands have.
std::string helpOn(const std::vector<std::string>& words) {
  if (words.size() == 1 && !nameCommand(words)) {
    if (std::string text = helpOfWord(words[0]); !text.empty()) return text;
  }
  CLI::App app("Reads and changes the appliance's store.", "kestrovectl");
  Session unused;
  describeProgram(app, unused);
  addCommands(app, unused, grammar());
  std::vector<std::string> line(words.rbegin(), words.rend());  // as the parser takes them from its end
  if (nameCommand(words)) line.insert(line.begin(), "--help");
  try {
    app.parse(line);
  } catch (const CLI::CallForHelp&) {
    return helpOf(app);
  } catch (const CLI::ParseError& error) {
    throw Refusal(kUsage, usageError(app, error));
  }
  return {};
}

std::string installedPage() {
  const std::string path = tools::ownFolder() + "/../share/man/man8/kestrovectl.8";
  return access(path.c_str(), R_OK) == 0 ? path : "";
}

// By the machine's own reader, which pages on a terminal. False where that did not work.
bool showPage(const Session& session, const std::string& program, std::string page) {
  std::string name = program;
  char* const words[] = {name.data(), page.data(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fileno(session.out), STDOUT_FILENO);
  pid_t child = 0;
  const int failed = posix_spawn(&child, program.c_str(), &actions, nullptr, words, environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failed != 0) return false;
  int status = 0;
  while (waitpid(child, &status, 0) == -1 && errno == EINTR) {
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void showManual(const Session& session) {
  const std::string page = installedPage();
  const std::string program = tools::findProgram("man");
  const bool shown = session.forPeople() && !page.empty() && !program.empty() && showPage(session, program, page);
  if (shown) return;
  const std::string text = manualText(grammar());
  if (session.forPeople()) return session.print(text);
  session.show({{"help", text}});
}

void help(const Session& session, const HelpLine& line) {
  if (line.manual) return showManual(session);
  const std::string text = helpOn(line.words);
  if (session.forPeople()) return session.print(text);
  session.show({{"help", text}});
}

}  // namespace

std::vector<Command> helpCommands() {
  return {command("help", "What a command does and takes", help,
                  {several("COMMAND", &HelpLine::words, takes::text().from(Completion::kCommands),
                           "Its words (default: all commands)"),
                   flag("--man", &HelpLine::manual, "The whole manual: by man where it is installed, else as text")})
              .gives("{help}")};
}

}  // namespace ctl
