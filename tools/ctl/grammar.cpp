// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/grammar.h"

#include <sstream>

#include "tools/ctl/commands.h"

namespace ctl {
namespace {

// One a line, so that two changes that add a family do not touch the same line.
// clang-format off
constexpr std::vector<Command> (*kFamilies[])() = {
    storeCommands,
    loadCommands,
    itemCommands,
    ruleCommands,
    userCommands,
    eventCommands,
    statsCommands,
    engineCommands,
    interfaceCommands,
    addressCommands,
    routeCommands,
    kernelCommands,
    stateCommands,
    dhcpCommands,
    dumpCommands,
    controlCommands,
    resetCommands,
    stateModeCommands,
    lockCommands,
    helpCommands,
    explainCommands,
    previewCommands,
    lintCommands,
    diffCommands,
    settingsCommands,
    applyCommands,
    lostCommands,
    historyCommands,
    confirmCommands,
    shellCommands,
    metricsCommands,
    supportCommands,
};
// clang-format on

}  // namespace

std::vector<std::string> wordsOf(const std::string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

const std::vector<Command>& grammar() {
  static const std::vector<Command> rows = [] {
    std::vector<Command> all;
    for (auto* family : kFamilies) {
      for (Command& row : family()) all.push_back(std::move(row));
    }
    return all;
  }();
  return rows;
}

const std::vector<Argument<Session>>& sharedOptions() {
  static const std::vector<Argument<Session>> options = [] {
    std::vector<Argument<Session>> all = {
        flag("--json", &Session::json, "Print JSON, errors included"),
        flag("--terse", &Session::terse, "Print a record a line, its values with a colon between them, for scripts"),
        option("--fields", &Session::fields, takes::list(), "Print only these members of each record, in this order"),
        flag("--wide", &Session::wide, "Do not make tables fit the terminal"),
        argument("--source", &Session::source, takes::number(0, 8),
                 "Number of the front end that events name (0 System, 3 Serial, 4 SSH ...)"),
        argument("--user", &Session::user, takes::text(), "Name that events carry (default: $USER)"),
        option("--wait", &Session::waitSeconds, takes::seconds(0, 86400),
               "How long to wait for a store that another process has locked"),
        argument("--comment", &Session::comment, takes::text(), "Of a change: a text for its revision"),
        argument("--confirm", &Session::confirmMinutes, takes::seconds(0, 1440).in("minutes"),
                 "Of a change: takes it back after that time unless kestrovectl confirm keeps it")};
    for (Argument<Session>& one : all) one.lastWins = one.name == "--source" || one.name == "--user";
    return all;
  }();
  return options;
}

}  // namespace ctl
