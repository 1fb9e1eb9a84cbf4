// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/shell.h"

#include <pwd.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>

#include "tools/ctl/place.h"
#include "tools/ctl/script/run_line.h"
#include "tools/ctl/shell/abbreviations.h"
#include "tools/ctl/shell/child.h"
#include "tools/ctl/shell/filters.h"
#include "tools/ctl/shell/input_lines.h"
#include "tools/ctl/shell/keys.h"
#include "tools/ctl/shell/program.h"
#include "tools/ctl/shell/rights.h"
#include "tools/ctl/shell/screen.h"

namespace ctl {
namespace {

std::string userOf(const Session& session) {
  if (!session.loggedIn.empty()) return session.loggedIn;
  const struct passwd* account = getpwuid(getuid());
  return account ? account->pw_name : "";
}

// What goes on until it is interrupted is shown as it comes, by the command itself.
bool goesOn(const Words& words) {
  return std::ranges::any_of(
      words, [](const std::string& word) { return word == "follow" || word == "--follow" || word == "--watch"; });
}

bool leaves(const Words& words) { return words.size() == 1 && (words[0] == "exit" || words[0] == "quit"); }

int tell(const Session& session, const Refusal& refusal) { return report(session, refusal); }

}  // namespace

Shell::Shell(const Session& session) : session_(session), history_(userOf(session), !session.loggedIn.empty()) {}

// Signals of keys are for the command that runs; none stops the shell.
void Shell::talk() {
  setlocale(LC_CTYPE, "");
  talks_ = true;
  for (int number : {SIGINT, SIGQUIT, SIGTSTP, SIGTTIN, SIGTTOU}) signal(number, SIG_IGN);
  session_.tellsWaiting = true;
  FILE* terminal = session_.out;
  const Editor::Answer tab = [this, terminal](const std::string& line) {
    return completed(line, terminal, readsOnly_.empty());
  };
  const Editor::Answer question = [terminal](const std::string& line) {
    return KeyAnswer{.shown = whatFollows(line, terminal)};
  };
  editor_ = std::make_unique<Editor>(terminal, Editor::Keys{tab, question});
  for (const std::string& line : history_.lines()) editor_->remember(line);
  while (!left_ && refreshRights()) {
    const std::optional<std::string> line = editor_->read(prompt());
    if (!line || !refreshRights()) break;
    run(*line);
  }
  if (!left_) session_.print("\n");
  if (known_.unsaved) warn("there are changes that are not saved (save writes them)");
}

std::optional<int> Shell::runNext(InputLines& lines) {
  try {
    const std::optional<std::string> line = lines.next();
    if (!line) return std::nullopt;
    const LinePlace here("-", lines.number());
    return run(*line);
  } catch (const Refusal& refusal) {
    if (refusal.exit() != kUsage) throw;
    return tell(session_, refusal);
  }
}

std::optional<int> Shell::readAll() {
  std::optional<int> first;
  InputLines lines;
  while (!left_) {
    const std::optional<int> status = runNext(lines);
    if (!status) break;
    if (first.value_or(0) == 0) first = status;
  }
  return first;
}

int Shell::run(const std::string& line) {
  try {
    return runWords(line);
  } catch (const Refusal& refusal) {
    return tell(session_, refusal);
  }
}

int Shell::runWords(const std::string& line) {
  const TypedLine typed(line);
  if (typed.empty()) return kDone;
  typed.requirePlain();
  Words words = typed.command();
  if (!words.empty() && words.back() == "?") {
    session_.print(whatFollows(line.substr(0, line.rfind('?')), session_.out));
    return kDone;
  }
  words = spelledOut(grammar(), words);
  keep(line, words);
  if (leaves(words)) {
    left_ = true;
    return kDone;
  }
  if (words.empty()) throw Refusal(kUsage, "in front of a bar a command is needed");
  Screen screen(session_.out, talks_);
  Filters filters(typed.filters(), [&screen](const std::string& one) { screen.line(one); });
  Session session = session_;
  session.json = session.json || filters.wantsJson();
  const int status = runCommand(session, words, filters, screen);
  if (talks_ && status == 128 + SIGINT) session_.print("\n");  // behind the ^C that the terminal shows
  return status;
}

int Shell::runCommand(const Session& session, const Words& words, Filters& filters, Screen& screen) const {
  if (filters.none() && (!talks_ || goesOn(words))) return inChild([&] { return runProgram(session, words); });
  return filtered(session, words, filters, screen);
}

int Shell::filtered(const Session& session, const Words& words, Filters& filters, Screen& screen) const {
  const int status = inChild(
      [&](FILE* out) {
        Session own = session;
        own.out = out;
        own.columns = filters.none() ? screenSize(session.out).columns : 0;
        return runProgram(own, words);
      },
      [&](const std::string& piece) {
        filters.take(piece);
        return !screen.left();
      });
  filters.end();
  screen.end();
  return screen.left() && status == 128 + SIGPIPE ? int{kDone} : status;
}

bool Shell::refreshRights() {
  if (session_.loggedIn.empty()) return true;
  const Rights rights = rightsOf(session_.loggedIn);
  if (rights.gone) warn("the account " + session_.loggedIn + " is gone");
  readsOnly_ = rights.readsOnly;
  session_.readsOnly = readsOnly_.empty() ? nullptr : readsOnly_.c_str();
  return !rights.gone;
}

// A line that makes no sense comes back with a key to be put right, as long as this shell lives.
void Shell::keep(const std::string& line, const Words& words) {
  if (!talks_ || leaves(words) || holdsSecret(words)) return;
  editor_->remember(line);
  if (isCommand(words)) history_.add(line);
}

// Found out in a process of its own, which says it in three lines.
std::string Shell::prompt() {
  const bool colours = showsColours(session_.out);
  const std::string found = textFromChild([&] {
    const std::string prompt = promptText(unitState(known_), !readsOnly_.empty(), colours);
    return known_.mark + "\n" + (known_.unsaved ? "*" : "") + "\n" + prompt;
  });
  const size_t first = found.find('\n');
  const size_t second = found.find('\n', first + 1);
  if (first == std::string::npos || second == std::string::npos) return "> ";
  known_ = {found.substr(0, first), second > first + 1};
  return found.substr(second + 1);
}

}  // namespace ctl
