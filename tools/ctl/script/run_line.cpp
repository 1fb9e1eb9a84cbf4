// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/script/run_line.h"

#include <algorithm>
#include <memory>

#include "tools/common/plain_text.h"
#include "tools/common/version_text.h"
#include "tools/ctl/command_line.h"
#include "tools/ctl/script/help_text.h"
#include "tools/ctl/script/match.h"
#include "tools/ctl/script/script_file.h"
#include "tools/ctl/settings/quoting.h"
#include "tools/ctl/usage.h"

namespace ctl {
namespace {

constexpr char kExitCodes[] =
    "Exit status:\n"
    "  0  done\n"
    "  1  refused by the library\n"
    "  2  wrong usage\n"
    "  3  there is no store\n"
    "  4  check or kernel show found something\n"
    "  5  a file, a program or standard output failed\n"
    "  6  another process held the store's lock longer than --wait\n"
    "  7  not permitted\n"
    "  8  applied, but not saved\n"
    "explain ends with the status of the command that it explains.";

std::string place;  // of the line that runs, in front of its messages: "-:3: "

void tell(const std::string& message) {
  fprintf(stderr, "kestrovectl: %s%s\n", place.c_str(), tools::escaped(message).c_str());
}

// The last one is kept until the process ends, which frees it faster than it would itself.
CLI::App& makeParser(Session& session) {
  static std::unique_ptr<CLI::App>& kept = *new std::unique_ptr<CLI::App>;
  kept = std::make_unique<CLI::App>("Reads and changes the appliance's store.", "kestrovectl");
  kept->require_subcommand(0, 1);
  kept->fallthrough();
  kept->footer(kExitCodes);
  kept->set_version_flag("--version", tools::versionText("kestrovectl"));
  addSharedOptions(*kept, session);
  return *kept;
}

std::vector<std::string> backwards(const std::vector<std::string>& words) { return {words.rbegin(), words.rend()}; }

// False for what the whole parser has to answer: help, and a line that makes no sense.
bool runNamed(Session& session, const std::vector<std::string>& words) {
  CLI::App& app = makeParser(session);
  addNamedCommands(app, session, grammar(), words);
  try {
    app.parse(backwards(words));
  } catch (const CLI::ParseError&) {
    return false;
  }
  return !app.get_subcommands().empty();
}

int reportUsage(const CLI::App& app, const Session& session, const std::string& message) {
  const int status = report(session, kUsage, message);
  if (!session.json) fprintf(stderr, "%s\n", usageOf(app).c_str());
  return status;
}

// What the matcher leaves: help, versions, lines within lines, and the words for what is wrong.
int runParser(Session& session, const std::vector<std::string>& words) {
  if (runNamed(session, words)) return kDone;
  CLI::App& app = makeParser(session);
  addCommands(app, session, grammar());
  const bool json = std::find(words.begin(), words.end(), "--json") != words.end();
  try {
    app.parse(backwards(words));
    if (!app.get_subcommands().empty()) return kDone;
    return reportUsage(app, session, "a command is needed (kestrovectl --help lists them)");
  } catch (const CLI::CallForHelp&) {
    session.print(ctl::helpOf(app));
  } catch (const CLI::CallForVersion&) {
    session.print(tools::versionText("kestrovectl") + "\n");
  } catch (const CLI::Success&) {
    return kDone;
  } catch (const CLI::ParseError& error) {
    session.json = session.json || json;
    return reportUsage(app, session, usageError(app, error));
  }
  return kDone;
}

void takeShared(Session& session, const Given& shared) {
  const std::vector<Argument<Session>>& options = sharedOptions();
  for (size_t i = 0; i < shared.size(); ++i) {
    for (const std::string& word : shared[i]) options[i].put(session, word);
  }
}

int refuseScriptLine(const Session& session, const Match& match) {
  const int status = report(session, kUsage, match.complaint);
  if (!session.json) fprintf(stderr, "Usage: kestrovectl %s\n", syntaxWithOptions(*match.near).c_str());
  return status;
}

int dispatch(Session& session, const std::vector<std::string>& words) {
  if (const auto mark = std::find(words.begin(), words.end(), "?"); mark != words.end()) {
    session.print(whatMayFollow({words.begin(), mark}));
    return kDone;
  }
  const Match match = matcher().match(words);
  if (!match.row && match.near && match.near->script) {
    takeShared(session, match.shared);
    return refuseScriptLine(session, match);
  }
  if (!match.row) return runParser(session, matcher().withoutAliases(words));
  takeShared(session, match.shared);
  runRow(session, *match.row, match.given);
  return kDone;
}

class Place {
 public:
  Place(const char* file, size_t number) : before_(place) {
    place = std::string(file) + ":" + std::to_string(number) + ": ";
  }
  ~Place() { place = before_; }
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;

 private:
  std::string before_;
};

}  // namespace

// The result that was printed may say it all. Where JSON cannot be printed the message goes to standard error.
int report(const Session& session, Exit exit, const std::string& message, int code) {
  if (message.empty()) return exit;
  if (!session.json) {
    tell(message);
    return exit;
  }
  try {
    session.show({{"error", errorJson(exit, place + message, code)}});
  } catch (const Refusal& refusal) {
    tell(message);
    if (message != refusal.what()) tell(refusal.what());
    return refusal.exit();
  }
  return exit;
}

int runWords(const Session& given, const std::vector<std::string>& words) {
  Session session = given;
  try {
    return dispatch(session, words);
  } catch (const Refusal& refusal) {
    return report(session, refusal.exit(), refusal.what(), refusal.code());
  }
}

int runLine(const Session& session, const std::string& line) {
  try {
    const std::vector<std::string> words = wordsOfLine(line);
    return words.empty() ? int{kDone} : runWords(session, words);
  } catch (const Refusal& refusal) {
    return report(session, refusal.exit(), refusal.what(), refusal.code());
  }
}

int runLines(const Session& session, FILE* in) {
  int first = kDone;
  size_t number = 0;
  size_t commands = 0;
  LineReader reader(in);
  for (std::string line; reader.next(line);) {
    const Place here("-", ++number);
    if (isBlankLine(line)) continue;
    ++commands;
    const int status = runLine(session, line);
    if (first == kDone) first = status;
  }
  if (commands > 0) return first;
  Session own = session;
  return runParser(own, {});
}

}  // namespace ctl
