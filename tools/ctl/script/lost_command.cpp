// SPDX-License-Identifier: Apache-2.0
// lost.
#include <sys/mount.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "kestrove/kestrove.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/script/lost.h"
#include "tools/ctl/script/lost_reasons.h"
#include "tools/ctl/script/target.h"
#include "tools/ctl/settings/copy.h"

namespace ctl {
namespace {

constexpr char kLocal[] = "/usr/local";
constexpr char kFolders[][32] = {"/usr/local/apache2", "/usr/local/apache2/htdocs"};
constexpr char kSavedScript[] = "/usr/local/apache2/htdocs/state-lost.txt";

// On the copy, whose folder of saved states can be read alone.
void makeFolder() {
  if (mount("scratch", kLocal, "tmpfs", MS_NOSUID | MS_NODEV, "mode=755") != 0) throw systemRefusal(kLocal, errno);
  for (const char* folder : kFolders) mkdir(folder, 0755);
}

Json saveScript() {
  makeFolder();
  if (__saveCliState("lost") != 0) throw Refusal(kSystem, "the script cannot be written on a copy of the appliance");
  std::ifstream file(kSavedScript, std::ios::binary);
  return std::string{std::istreambuf_iterator<char>(file), {}};
}

Script parsed(std::string text) {
  if (text.empty()) return {.name = "script"};
  FILE* in = fmemopen(text.data(), text.size(), "r");
  if (!in) throw Refusal(kSystem, "the script cannot be read back");
  Script script = scriptOf("script", in);
  fclose(in);
  return script;
}

// A line that does not come back says why.
std::string refusedReason(const Target& target, const Script& script, const SettingChange& change) {
  for (const Complaint& one : target.refused) {
    for (const ScriptLine& line : script.lines) {
      const ItemWish* item = std::get_if<ItemWish>(&line.wish);
      if (line.number == one.line && item && change.key == item->row->name)
        return std::string("refused on its way back: ") + one.refusal.what();
    }
  }
  if (target.refused.empty()) return "it does not come back as it was";
  return std::string("refused on its way back: ") + target.refused.front().refusal.what();
}

struct LostLine {
  std::string path;
};

Json rowOf(const LostSetting& one) {
  const auto orNull = [](const std::optional<std::string>& text) { return text ? Json(*text) : Json(nullptr); };
  return {{"section", one.change.section},
          {"key", one.change.key},
          {"setting", orNull(one.change.after)},
          {"becomes", orNull(one.change.before)},
          {"reason", one.reason}};
}

std::string textOf(const LostSetting& one) {
  const SettingChange& change = one.change;
  return tools::escaped(change.after ? *change.after : "nothing") + "\n" +
         (change.before ? "  becomes: " + tools::escaped(*change.before) + "\n" : "") + "  " + one.reason + "\n";
}

void lost(const Session& session, const LostLine& line) {
  requireStore(session);
  const Image image = line.path.empty() ? runningImage(session) : fileImage(session, line.path);
  const std::vector<LostSetting> settings = lostIn(image);
  Json rows = Json::array();
  std::string text;
  for (const LostSetting& one : settings) {
    rows.push_back(rowOf(one));
    text += textOf(one);
  }
  if (session.json) {
    session.show({{"lost", rows}});
  } else {
    session.print(settings.empty() ? "a saved script holds every setting\n" : text);
  }
  if (!settings.empty()) throw Refusal(kFindings, "");
}

}  // namespace

std::string savedScript(const Image& image) { return onCopy(image, saveScript).json.get<std::string>(); }

std::vector<LostSetting> lostIn(const Image& image) {
  const Script script = parsed(savedScript(image));
  if (!script.complaints.empty()) {
    throw Refusal(kSystem, "line " + std::to_string(script.complaints.front().line) +
                               " of the script is not understood: " + script.complaints.front().refusal.what());
  }
  const Image empty = imageFromLines({}, *image);
  const Target target = targetOf(empty, script, Joining::kMerge);
  std::vector<LostSetting> lost;
  for (SettingChange& change : compare(*target.store, *image).changes) {
    std::string reason = lostReason(change, *image);
    if (reason.empty()) reason = refusedReason(target, script, change);
    lost.push_back({std::move(change), std::move(reason)});
  }
  return lost;
}

std::vector<Command> lostCommands() {
  return {
      command("lost", "Settings that a saved script cannot hold", lost,
              {argument("FILE", &LostLine::path, takes::file(), "A configuration file (default: the running store)")},
              "Each with what comes back in its place, and why. Ends with 4 where there are some.")};
}

}  // namespace ctl
