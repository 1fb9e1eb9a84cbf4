// SPDX-License-Identifier: Apache-2.0
// explain: what a change would do, found out by doing it in a sandbox copy of the present store.
#include <vector>

#include "tools/common/plain_text.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/explain_inside.h"
#include "tools/ctl/sandbox_call.h"
#include "tools/ctl/sandbox_store.h"

namespace ctl {
namespace {

struct ExplainLine {
  std::vector<std::string> words;
};

struct InsideLine {
  std::string image;
  std::vector<std::string> words;
};

// For a human reader the text stands last: blanks at its end are part of it.
void show(const Session& session, const Json& trace) {
  if (!session.forPeople()) return session.show(trace);
  std::string text;
  for (const Json& row : trace["effects"]) {
    char start[32];
    snprintf(start, sizeof start, "%-8s %-14s ", row["kind"].get<std::string>().c_str(),
             row["result"].get<std::string>().c_str());
    text += start + tools::escaped(row["effect"].get<std::string>()) + "\n";
  }
  session.print(text.empty() ? "nothing outside the store changes\n" : text);
}

void explain(const Session& session, const ExplainLine& given) {
  if (given.words.empty()) throw Refusal(kUsage, "a command to explain is needed");
  if (given.words.front() == "explain") throw Refusal(kUsage, "explain does not explain itself");
  requireStore(session);
  ScratchFolder folder;
  const std::string image = folder.path() + "/image";
  writeImage(*runningImage(session), image);
  const Json trace = runInSandbox(session, "explain-inside", image, given.words);
  show(session, trace);
  passStatus(session, trace["exit"].get<int>());
}

void inside(const Session& session, const InsideLine& line) { explainInside(session, line.image, line.words); }

}  // namespace

std::vector<Command> explainCommands() {
  Command explaining = command(
      "explain", "What a change causes: commands, ioctls, netlink messages, files, signal, events, bits", explain,
      {several("COMMAND", &ExplainLine::words, takes::commandLine(), "A kestrovectl command with its arguments")},
      "explain COMMAND [ARGUMENT...]: a kestrovectl command with its arguments. The exit status is the command's.");
  Command hidden = command("explain-inside", "", inside,
                           {needed("IMAGE", &InsideLine::image, takes::file(), ""),
                            several("COMMAND", &InsideLine::words, takes::text(), "")});
  explaining.values.back().needed = hidden.values.back().needed = hidden.hidden = true;
  return {explaining, hidden};
}

}  // namespace ctl
