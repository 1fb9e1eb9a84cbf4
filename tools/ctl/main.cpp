// SPDX-License-Identifier: Apache-2.0
// kestrovectl: the appliance's store from the command line.
#include <cstdlib>
#include <deque>
#include <memory>

#include "tools/common/plain_text.h"
#include "tools/common/standard_output.h"
#include "tools/common/version_text.h"
#include "tools/ctl/command_line.h"
#include "tools/ctl/exit_codes.h"
#include "tools/ctl/usage.h"

namespace {

void tell(const std::string& message) { fprintf(stderr, "kestrovectl: %s\n", tools::escaped(message).c_str()); }

// The result that was printed may say it all. Where JSON cannot be printed the message goes to standard error.
int report(const ctl::Session& session, const ctl::Refusal& told) {
  const std::string message = told.what();
  if (message.empty()) return told.exit();
  if (!session.json) {
    tell(message);
    return told.exit();
  }
  try {
    session.show({{"error", ctl::errorJson(told)}});
  } catch (const ctl::Refusal& refusal) {
    tell(message);
    if (message != refusal.what()) tell(refusal.what());
    return refusal.exit();
  }
  return told.exit();
}

// Kept until the process ends, which frees it faster than it would itself.
CLI::App& makeParser(ctl::Session& session) {
  static std::deque<std::unique_ptr<CLI::App>>& kept = *new std::deque<std::unique_ptr<CLI::App>>;
  CLI::App& app =
      *kept.emplace_back(std::make_unique<CLI::App>("Reads and changes the appliance's store.", "kestrovectl"));
  app.require_subcommand(0, 1);
  app.fallthrough();
  app.footer(ctl::exitCodesText());
  app.set_version_flag("--version", tools::versionText("kestrovectl"));
  ctl::addSharedOptions(app, session);
  return app;
}

// A usage error may come before the option was parsed.
bool asksForJson(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::string(argv[i]) == "--json") return true;
  }
  return false;
}

int reportUsage(const CLI::App& app, const ctl::Session& session, const std::string& message) {
  const int status = report(session, {ctl::kUsage, message});
  if (!session.json) fprintf(stderr, "%s\n", ctl::usageOf(app).c_str());
  return status;
}

// False for what the whole parser has to answer: help, and a line that makes no sense.
bool runNamed(ctl::Session& session, int argc, char** argv) {
  const std::vector<std::string> line(argv + 1, argv + argc);
  CLI::App& app = makeParser(session);
  ctl::addNamedCommands(app, session, ctl::grammar(), line);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError&) {
    return false;
  }
  return !app.get_subcommands().empty();
}

int run(ctl::Session& session, int argc, char** argv) {
  if (runNamed(session, argc, argv)) return ctl::kDone;
  CLI::App& app = makeParser(session);
  ctl::addCommands(app, session, ctl::grammar());
  try {
    app.parse(argc, argv);
    if (!app.get_subcommands().empty()) return ctl::kDone;
    return reportUsage(app, session, "a command is needed (kestrovectl --help lists them)");
  } catch (const CLI::CallForHelp&) {
    session.print(ctl::helpOf(app));
  } catch (const CLI::CallForVersion&) {
    session.print(tools::versionText("kestrovectl") + "\n");
  } catch (const CLI::Success&) {
    return ctl::kDone;
  } catch (const CLI::ParseError& error) {
    session.json = asksForJson(argc, argv);
    return reportUsage(app, session, ctl::usageError(app, error));
  }
  return ctl::kDone;
}

int runSafely(ctl::Session& session, int argc, char** argv) {
  std::string refused = tools::refusedWord(argc, argv);
  if (refused.empty() && tools::hasControlCharacter(session.user)) refused = "USER holds a control character";
  if (!refused.empty()) {
    session.json = asksForJson(argc, argv);
    return report(session, {ctl::kUsage, refused});
  }
  try {
    return run(session, argc, argv);
  } catch (const ctl::Refusal& refusal) {
    return report(session, refusal);
  }
}

}  // namespace

int main(int argc, char** argv) {
  ctl::Session session;
  session.out = tools::takeStandardOutput();
  if (const char* user = getenv("USER")) session.user = user;
  return runSafely(session, argc, argv);
}
