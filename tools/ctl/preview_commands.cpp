// SPDX-License-Identifier: Apache-2.0
// preview: what a command would make different, found out on a copy of the appliance.
#include <vector>

#include "kestrove/kestrove.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/preview/inside.h"
#include "tools/ctl/preview/unified.h"
#include "tools/ctl/sandbox_call.h"
#include "tools/ctl/settings/difference.h"

namespace ctl {
namespace {

struct PreviewLine {
  std::vector<std::string> words;
};

struct InsideLine {
  std::string folder;
  std::vector<std::string> words;
};

std::string textOr(const Json& text) { return text.is_null() ? "" : text.get<std::string>(); }

// Line feeds and tabs belong to the texts; other control characters do not reach a terminal.
std::string shownLines(const std::string& text) {
  std::string shown;
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find_first_of("\n\t", start), text.size());
    shown += tools::escaped(text.substr(start, end - start)) + text.substr(end, 1);
    start = end + 1;
  }
  return shown;
}

std::string changeText(const std::string& name, const Json& change) {
  const Json &before = change["before"], &after = change["after"];
  return preview::unifiedDifference(before.is_null() ? "/dev/null" : name, textOr(before),
                                    after.is_null() ? "/dev/null" : name, textOr(after));
}

std::string storeText(const Json& store) {
  Difference difference;
  for (const Json& change : store["changes"]) {
    SettingChange one = {change["section"], change["key"], {}, {}};
    if (!change["before"].is_null()) one.before = change["before"];
    if (!change["after"].is_null()) one.after = change["after"];
    difference.changes.push_back(one);
  }
  return difference.empty() ? "" : "--- store\n+++ store\n" + differenceText(difference, false);
}

std::string resultText(const Json& result) {
  std::string text = storeText(result["store"]);
  for (const Json& file : result["files"]) text += changeText(file["path"], file);
  for (const Json& kernel : result["kernel"]) {
    text += changeText("kernel " + kernel["section"].get<std::string>(), kernel);
  }
  return text.empty() ? "nothing changes\n" : shownLines(text);
}

void show(const Session& session, const Json& result) {
  if (session.json) return session.show(result);
  for (const Json& note : result["notes"]) warn(note);
  session.print(resultText(result));
}

void previewCommand(const Session& session, const PreviewLine& given) {
  if (given.words.empty()) throw Refusal(kUsage, "a command to preview is needed");
  for (const char* word : {"preview", "explain", "shell"}) {
    if (given.words.front() == word) throw Refusal(kUsage, std::string("preview does not try ") + word);
  }
  requireStore(session);
  ScratchFolder folder;
  preview::exportAppliance(session, folder.path());
  const Json result = runInSandbox(session, "preview-inside", folder.path(), given.words);
  show(session, result);
  passStatus(session, result["exit"].get<int>());
}

void inside(const Session& session, const InsideLine& line) {
  session.print(jsonText(preview::tryCommand(line.folder, line.words), -1));
}

}  // namespace

std::vector<Command> previewCommands() {
  Command trying = command(
      "preview", "What a command would make different: settings, files, kernel", previewCommand,
      {several("COMMAND", &PreviewLine::words, takes::commandLine(), "A kestrovectl command with its arguments")},
      "preview COMMAND [ARGUMENT...]: the command is carried out on a copy of the appliance in a sandbox: its store, "
      "its "
      "files, its addresses, routes, rules, bridges and packet filter. The exit status is the command's.");
  Command hidden = command("preview-inside", "", inside,
                           {needed("FOLDER", &InsideLine::folder, takes::text(), ""),
                            several("COMMAND", &InsideLine::words, takes::text(), "")});
  trying.values.back().needed = hidden.values.back().needed = hidden.hidden = true;
  return {trying, hidden};
}

}  // namespace ctl
