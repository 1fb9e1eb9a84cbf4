// SPDX-License-Identifier: Apache-2.0
// shell, completion.
#include <unistd.h>

#include "kestrove/codes.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/shell/completion.h"
#include "tools/ctl/shell/login.h"
#include "tools/ctl/shell/program.h"
#include "tools/ctl/shell/shell.h"

namespace ctl {
namespace {

struct ShellLine {
  bool login = false;
  double delay = 1;
};

bool onTerminal(const Session& session) { return isatty(STDIN_FILENO) && isatty(fileno(session.out)); }

void talkAfterLogIn(const Session& session, double delay) {
  if (!onTerminal(session)) throw Refusal(kUsage, "a log-in needs a terminal");
  Session own = session;
  own.source = SHM_SOURCE_SERIAL;
  own.loggedIn = own.user = logIn(session, delay);
  if (own.loggedIn.empty()) return;
  closeEnvironment(own.loggedIn);
  Shell(own).talk();
}

void shell(const Session& session, const ShellLine& line) {
  if (inShell()) throw Refusal(kUsage, "this is the shell already");
  if (line.login) return talkAfterLogIn(session, line.delay);
  Shell shell(session);
  if (onTerminal(session)) return shell.talk();
  const int status = shell.readAll().value_or(kDone);
  if (status != kDone) throw Refusal(static_cast<Exit>(status), "");
}

}  // namespace

std::optional<int> shellWithoutCommand(const Session& session) {
  if (inShell() || (isatty(STDIN_FILENO) && !onTerminal(session))) return std::nullopt;
  Shell shell(session);
  if (!onTerminal(session) && !isatty(STDIN_FILENO)) return shell.readAll();
  shell.talk();
  return kDone;
}

std::vector<Command> shellCommands() {
  std::vector<Command> rows = {
      command("shell", "Commands one after the other, from a person or from standard input", shell,
              {flag("--login", &ShellLine::login, "Ask for a user of the store first, as a serial console does"),
               option("--delay", &ShellLine::delay, takes::seconds(0, 30),
                      "Wait after a log-in that failed; each further one doubles it, up to 30 seconds")},
              "On a terminal: Tab completes, ? lists what may follow, words of commands may be cut, Ctrl-C drops "
              "the line or ends the command, Ctrl-D leaves.\nBehind a bar: match RE, count, json, last N.\n"
              "From standard input each line runs, whatever came of those before; the exit status is that of the "
              "first that failed.")};
  for (Command& row : completionCommands()) rows.push_back(std::move(row));
  return rows;
}

}  // namespace ctl
