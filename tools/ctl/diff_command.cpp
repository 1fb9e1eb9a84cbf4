// SPDX-License-Identifier: Apache-2.0
// diff.
#include <unistd.h>

#include <cstdlib>

#include "tools/ctl/commands.h"
#include "tools/ctl/settings/difference.h"
#include "tools/ctl/settings/state.h"

namespace ctl {
namespace {

constexpr char kStates[] =
    "A state is running, saved (what a restart brings back: the factory defaults and the configuration file), rev:N "
    "(of "
    "the\nhistory), a configuration file or a script. Ends with 0 when they are equal, with 4 when they differ.";

struct DiffLine {
  std::vector<std::string> states;
};

struct Pair {
  std::string before = "running";
  std::string after = "saved";
};

Pair pairOf(const DiffLine& line) {
  Pair pair;
  if (line.states.size() > 2) throw Refusal(kUsage, line.states[2] + ": two states are compared, not more");
  if (!line.states.empty()) pair.before = line.states[0];
  if (line.states.size() == 2) pair.after = line.states[1];
  return pair;
}

bool inColours(const Session& session) {
  const char* refused = getenv("NO_COLOR");
  return isatty(fileno(session.out)) && !(refused && *refused);
}

// Only against the file does it matter that it has no line for them.
std::vector<std::string> lostAtRestart(const Pair& line, const Difference& difference) {
  std::vector<std::string> keys;
  if (line.before != "saved" && line.after != "saved") return keys;
  for (const SettingChange& change : difference.changes) {
    if (keptInNoFile(change.section, change.key)) keys.push_back(change.key);
  }
  return keys;
}

std::string lostText(const std::vector<std::string>& keys) {
  std::string text;
  for (const std::string& key : keys) text += (text.empty() ? "" : ", ") + key;
  return text.empty() ? "" : "not in the configuration file, a restart takes the factory default: " + text + "\n";
}

std::string unifiedText(const Pair& line, const Difference& difference, bool colours) {
  if (difference.empty()) return {};
  return "--- " + line.before + "\n+++ " + line.after + "\n" + differenceText(difference, colours);
}

void diff(const Session& session, const DiffLine& given) {
  const Pair line = pairOf(given);
  requireStore(session);
  const Difference difference = compare(linesOf(session, line.before), linesOf(session, line.after));
  const std::vector<std::string> lost = lostAtRestart(line, difference);
  if (!session.forPeople()) {
    Json result = differenceJson(difference);
    result["unsaved"] = lost;
    session.show(result);
  } else {
    session.print(unifiedText(line, difference, inColours(session)) + lostText(lost));
  }
  if (!difference.empty()) throw Refusal(kFindings, "");
}

}  // namespace

std::vector<Command> diffCommands() {
  return {command("diff", "What makes two states of the settings differ", diff,
                  {several("STATE", &DiffLine::states, takes::file(), "The two states (default: running saved)")},
                  kStates)};
}

}  // namespace ctl
