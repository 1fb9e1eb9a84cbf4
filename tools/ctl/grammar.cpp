// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/grammar.h"

#include <sstream>

#include "tools/ctl/commands.h"

namespace ctl {

std::vector<std::string> wordsOf(const std::string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

const std::vector<Command>& grammar() {
  static const std::vector<Command> rows = [] {
    std::vector<Command> all;
    for (auto commands :
         {storeCommands, loadCommands,    itemCommands,      ruleCommands,    userCommands,  eventCommands,
          statsCommands, engineCommands,  interfaceCommands, addressCommands, routeCommands, kernelCommands,
          stateCommands, dhcpCommands,    dumpCommands,      controlCommands, resetCommands, stateModeCommands,
          lockCommands,  explainCommands, lintCommands,      previewCommands}) {
      for (Command& row : commands()) all.push_back(std::move(row));
    }
    return all;
  }();
  return rows;
}

const std::vector<Argument<Session>>& sharedOptions() {
  static const std::vector<Argument<Session>> options = [] {
    std::vector<Argument<Session>> all = {
        flag("--json", &Session::json, "Print JSON, errors included"),
        argument("--source", &Session::source, takes::number(0, 8),
                 "Number of the front end that events name (0 System, 3 Serial, 4 SSH ...)"),
        argument("--user", &Session::user, takes::text(), "Name that events carry (default: $USER)"),
        option("--wait", &Session::waitSeconds, takes::seconds(0, 86400),
               "How long to wait for a store that another process has locked")};
    all[1].lastWins = all[2].lastWins = true;
    return all;
  }();
  return options;
}

}  // namespace ctl
