// SPDX-License-Identifier: Apache-2.0
// kestrove-api: the appliance's store over HTTP.
#include <syslog.h>

#include <cstdio>

#include "CLI/CLI.hpp"
#include "tools/api/parent.h"
#include "tools/api/tokens.h"
#include "tools/common/standard_output.h"
#include "tools/common/version_text.h"

namespace {

// One that works for all of the others is not enough where it is busy; more only take memory.
constexpr int kFewestWorkers = 2;
constexpr int kMostWorkers = 4;

constexpr char kExitCodes[] =
    "Exit status:\n"
    "  0  told to end; or done\n"
    "  1  there is no such token, or there is one already\n"
    "  2  wrong usage\n"
    "  3  a library of another layout\n"
    "  5  another process listens there; or a file or a socket cannot be used\n"
    "  6  others are at work on the tokens\n"
    "  7  not permitted";

struct Line {
  api::SocketPlace place;
  api::Settings settings;
  int workers = 3;
  std::string name;
  std::string role = "read";
};

void addTokens(CLI::App& app, Line& line, FILE* out) {
  CLI::App* tokens = app.add_subcommand("token", "Tokens for programs");
  tokens->require_subcommand(1);
  CLI::App* add = tokens->add_subcommand("add", "Make one; it is shown this once");
  add->add_option("NAME", line.name, "1 to 24 letters, digits and dashes")->required();
  add->add_option("--role", line.role, "read or admin")->check(CLI::IsMember({"read", "admin"}));
  add->callback([&line, out] { tools::writeOut(out, api::addToken(line.name, line.role == "admin") + "\n"); });
  CLI::App* remove = tokens->add_subcommand("remove", "Take one back");
  remove->add_option("NAME", line.name, "Its name")->required();
  remove->callback([&line] {
    if (!api::removeToken(line.name)) throw ctl::Refusal(ctl::kRefused, line.name + ": there is none");
  });
  tokens->add_subcommand("list", "All of them, without themselves")->callback([out] {
    tools::writeOut(out, ctl::jsonText(api::tokenRows(), 2) + "\n");
  });
}

int run(int argc, char** argv) {
  Line line;
  FILE* out = tools::takeStandardOutput();
  CLI::App app("The appliance's store over HTTP, behind its web server.", "kestrove-api");
  app.footer(kExitCodes);
  app.set_version_flag("--version", tools::versionText("kestrove-api"));
  app.add_option("--socket", line.place.path, "Where it listens")->capture_default_str();
  app.add_option("--group", line.place.group, "Who may connect beside root")->capture_default_str();
  app.add_option("--workers", line.workers, "Processes that answer")
      ->check(CLI::Range(kFewestWorkers, kMostWorkers))
      ->capture_default_str();
  app.add_option("--host", line.settings.names, "A further name of the appliance, in small letters");
  addTokens(app, line, out);
  try {
    app.parse(argc, argv);
    if (!app.get_subcommands().empty()) return 0;
    openlog("kestrove-api", LOG_PID, LOG_DAEMON);
    return api::superviseWorkers(line.place, line.workers, line.settings);
  } catch (const CLI::ParseError& error) {
    FILE* complaints = error.get_exit_code() == 0 ? out : stderr;
    std::ostringstream help, complaint;
    app.exit(error, help, complaint);
    fputs((help.str() + complaint.str()).c_str(), complaints);
    fflush(complaints);
    return error.get_exit_code() == 0 ? 0 : int{ctl::kUsage};
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (const std::string other = tools::libraryRefusal(); !other.empty()) throw ctl::Refusal(ctl::kNoStore, other);
    return run(argc, argv);
  } catch (const ctl::Refusal& refusal) {
    fprintf(stderr, "kestrove-api: %s\n", refusal.what());
    return refusal.exit();
  }
}
