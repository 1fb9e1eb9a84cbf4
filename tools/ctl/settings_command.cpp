// SPDX-License-Identifier: Apache-2.0
// settings.
#include "tools/common/plain_text.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/settings/state.h"

namespace ctl {
namespace {

constexpr char kStates[] =
    "A state is running, saved, rev:N (of the history), a configuration file or a script. Each line is a command that "
    "makes the setting what it is. apply takes all but those of users, of which no line has the password.";

struct SettingsLine {
  std::string state = "running";
};

void showSettings(const Session& session, const SettingsLine& line) {
  requireStore(session);
  Json rows = Json::array();
  std::string text;
  for (const SettingLine& setting : linesOf(session, line.state)) {
    rows.push_back({{"section", setting.section}, {"key", setting.key}, {"line", setting.text}});
    text += tools::escaped(setting.text) + "\n";
  }
  session.forPeople() ? session.print(text) : session.show(rows);
}

}  // namespace

std::vector<Command> settingsCommands() {
  return {command("settings", "The settings as the lines that make them", showSettings,
                  {option("STATE", &SettingsLine::state, takes::file(), "Of which state (default: running)")},
                  kStates)};
}

}  // namespace ctl
