// kestrovectl: the appliance's store from the command line.
#include <cstdlib>

#include "tools/common/standard_output.h"
#include "tools/common/version_text.h"
#include "tools/ctl/commands.h"

namespace {

constexpr char kExitCodes[] =
    "Exit status: 0 done; 1 refused by the library; 2 wrong usage; 3 no store; 4 findings (check, kernel show); 5 a "
    "file "
    "or program failed.";

int report(const ctl::Session& session, ctl::Exit exit, const std::string& message, int code) {
  if (message.empty()) return exit;  // the result that was printed says it all
  if (session.json) {
    ctl::Json error = {{"message", message}, {"exit", static_cast<int>(exit)}};
    if (code >= 0) error["code"] = code;
    session.show({{"error", error}});
  } else {
    fprintf(stderr, "kestrovectl: %s\n", message.c_str());
  }
  return exit;
}

void addGroups(CLI::App& app, ctl::Session& session) {
  for (auto add : {ctl::addStoreCommands, ctl::addItemCommands, ctl::addRuleCommands, ctl::addUserCommands,
                   ctl::addEventCommands, ctl::addStatsCommands, ctl::addEngineCommands, ctl::addInterfaceCommands,
                   ctl::addAddressCommands, ctl::addRouteCommands, ctl::addKernelCommands, ctl::addStateCommands,
                   ctl::addDumpCommands, ctl::addExplainCommand}) {
    add(app, session);
  }
}

// The whole picture, or the command that was asked about.
std::string helpOf(const CLI::App& app) {
  const CLI::App* asked = &app;
  while (!asked->get_subcommands().empty()) asked = asked->get_subcommands().front();
  return asked == &app ? app.help("", CLI::AppFormatMode::All) : asked->help("kestrovectl");
}

// A usage error may come before the option was parsed.
bool asksForJson(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::string(argv[i]) == "--json") return true;
  }
  return false;
}

int run(CLI::App& app, ctl::Session& session, int argc, char** argv) {
  try {
    app.parse(argc, argv);
    if (!app.get_subcommands().empty()) return ctl::kDone;
    return report(session, ctl::kUsage, "a command is needed (kestrovectl --help lists them)", -1);
  } catch (const CLI::CallForHelp& call) {
    fputs(helpOf(app).c_str(), session.out);
  } catch (const CLI::CallForVersion&) {
    fprintf(session.out, "%s\n", tools::versionText("kestrovectl").c_str());
  } catch (const CLI::Success&) {
    return ctl::kDone;
  } catch (const CLI::ParseError& error) {
    session.json = asksForJson(argc, argv);
    return report(session, ctl::kUsage, error.what(), -1);
  } catch (const ctl::Refusal& refusal) {
    return report(session, refusal.exit(), refusal.what(), refusal.code());
  }
  return ctl::kDone;
}

}  // namespace

int main(int argc, char** argv) {
  ctl::Session session;
  session.out = tools::takeStandardOutput();
  if (const char* user = getenv("USER")) session.user = user;

  CLI::App app("Reads and changes the appliance's store.", "kestrovectl");
  app.require_subcommand(0, 1);
  app.fallthrough();
  app.footer(kExitCodes);
  app.set_version_flag("--version", tools::versionText("kestrovectl"));
  app.add_flag("--json", session.json, "Print JSON, errors included");
  app.add_option("--source", session.source, "Number of the front end that events name (0 System, 3 Serial, 4 SSH ...)")
      ->check(CLI::Range(0, 8));
  app.add_option("--user", session.user, "Name that events carry (default: $USER)");
  addGroups(app, session);

  int status = run(app, session, argc, argv);
  if (fflush(session.out) != 0 && status == ctl::kDone) status = ctl::kSystem;
  return status;
}
