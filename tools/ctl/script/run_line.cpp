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
#include "tools/ctl/shell/shell.h"
#include "tools/ctl/usage.h"

namespace ctl {
namespace {

std::string place;  // of the line that runs, in front of its messages: "-:3: "

void tell(const std::string& message) {
  fprintf(stderr, "kestrovectl: %s%s\n", place.c_str(), tools::escaped(message).c_str());
}

// The last one is kept until the process ends, which frees it faster than it would itself.
CLI::App& makeParser(Session& session) {
  static std::unique_ptr<CLI::App>& kept = *new std::unique_ptr<CLI::App>;
  kept = std::make_unique<CLI::App>("Reads and changes the appliance's store.", "kestrovectl");
  describeProgram(*kept, session);
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

// A usage error may come before the option was parsed.
bool asksForJson(const std::vector<std::string>& words) {
  return std::find(words.begin(), words.end(), "--json") != words.end();
}

std::string refusedText(const Session& session, const std::vector<std::string>& words) {
  if (std::string refused = tools::refusedWord(words); !refused.empty()) return refused;
  return tools::hasControlCharacter(session.user) ? "USER holds a control character" : "";
}

int reportUsage(const CLI::App& app, const Session& session, const std::string& message) {
  const int status = report(session, {kUsage, message});
  if (!session.json) fprintf(stderr, "%s\n", usageOf(app).c_str());
  return status;
}

// What the matcher leaves: help, versions, lines within lines, and the words for what is wrong.
int runParser(Session& session, const std::vector<std::string>& words) {
  if (runNamed(session, words)) return kDone;
  CLI::App& app = makeParser(session);
  addCommands(app, session, grammar());
  try {
    app.parse(backwards(words));
    if (!app.get_subcommands().empty()) return kDone;
    if (const std::optional<int> status = shellWithoutCommand(session)) return *status;
    return reportUsage(app, session, "a command is needed (kestrovectl --help lists them)");
  } catch (const CLI::CallForHelp&) {
    session.print(ctl::helpOf(app));
  } catch (const CLI::CallForVersion&) {
    session.print(tools::versionText("kestrovectl") + "\n");
  } catch (const CLI::Success&) {
    return kDone;
  } catch (const CLI::ParseError& error) {
    session.json = session.json || asksForJson(words);
    return reportUsage(app, session, usageError(app, error));
  }
  return kDone;
}

bool mayGiveAll(const Session& session, const Given& shared) {
  for (size_t i = 0; i < shared.size(); ++i) {
    if (!shared[i].empty() && !mayGive(session, sharedOptions()[i].name)) return false;
  }
  return true;
}

void takeShared(Session& session, const Given& shared) {
  const std::vector<Argument<Session>>& options = sharedOptions();
  for (size_t i = 0; i < shared.size(); ++i) {
    for (const std::string& word : shared[i]) options[i].put(session, word);
  }
}

int refuseScriptLine(const Session& session, const Match& match) {
  const int status = report(session, {kUsage, match.complaint});
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
  if (!match.row || !mayGiveAll(session, match.shared)) return runParser(session, matcher().withoutAliases(words));
  takeShared(session, match.shared);
  runRow(session, *match.row, match.given);
  return kDone;
}

}  // namespace

LinePlace::LinePlace(const char* file, size_t number) : before_(place) {
  place = std::string(file) + ":" + std::to_string(number) + ": ";
}

LinePlace::~LinePlace() { place = before_; }

// The result that was printed may say it all. Where JSON cannot be printed the message goes to standard error.
int report(const Session& session, const Refusal& told) {
  const std::string message = told.what();
  if (message.empty()) return told.exit();
  if (!session.json) {
    tell(message);
    return told.exit();
  }
  try {
    session.show({{"error", errorJson({told.exit(), place + message, told.code(), told.error()})}});
  } catch (const Refusal& refusal) {
    tell(message);
    if (message != refusal.what()) tell(refusal.what());
    return refusal.exit();
  }
  return told.exit();
}

int runWords(const Session& given, const std::vector<std::string>& words) {
  Session session = given;
  session.words = words;
  if (const std::string refused = refusedText(session, words); !refused.empty()) {
    session.json = session.json || asksForJson(words);
    return report(session, {kUsage, refused});
  }
  try {
    return dispatch(session, words);
  } catch (const Refusal& refusal) {
    return report(session, refusal);
  }
}

int runLine(const Session& session, const std::string& line) {
  try {
    const std::vector<std::string> words = wordsOfLine(line);
    return words.empty() ? int{kDone} : runWords(session, words);
  } catch (const Refusal& refusal) {
    return report(session, refusal);
  }
}

}  // namespace ctl
