// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/settings/state.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <fstream>

#include "tools/common/config_lint.h"
#include "tools/ctl/settings/revision.h"
#include "tools/ctl/settings/script_image.h"
#include "tools/ctl/settings/setting_items.h"

namespace ctl {
namespace {

constexpr char kRevision[] = "rev:";
// What a line of a script begins with.
constexpr std::string_view kScriptWords[] = {"set",     "ip",   "route",     "route6", "rule",
                                             "address", "mode", "interface", "user"};

int revisionNumber(const std::string& state) {
  const std::string digits = state.substr(sizeof kRevision - 1);
  if (digits.empty() || digits.size() > 9 || digits.find_first_not_of("0123456789") != std::string::npos) {
    throw Refusal(kUsage, state + ": no revision (rev:N, history lists them)");
  }
  return std::stoi(digits);
}

std::string firstWord(const std::string& line) {
  const size_t begin = line.find_first_not_of(" \t\r");
  if (begin == std::string::npos || line[begin] == '#') return {};
  return line.substr(begin, line.find_first_of(" \t\r", begin) - begin);
}

FileKind kindOfWord(const std::string& word) {
  auto known = [&word](const tools::ConfigKeyword& keyword) { return keyword.name == word; };
  if (std::ranges::any_of(tools::configKeywords(), known)) return FileKind::kConfiguration;
  return std::ranges::find(kScriptWords, word) != std::end(kScriptWords) ? FileKind::kScript : FileKind::kNeither;
}

void requirePlainFile(const std::string& path) {
  struct stat facts;
  if (stat(path.c_str(), &facts) != 0) throw systemRefusal(path, errno);
  if (!S_ISREG(facts.st_mode)) throw Refusal(kSystem, path + ": no plain file");
}

Image imageOfFile(const Session& session, const std::string& path) {
  requirePlainFile(path);
  switch (kindOfFile(path)) {
    case FileKind::kConfiguration: return fileImage(session, path);
    case FileKind::kScript: return scriptImage(session, path);
    case FileKind::kNeither: break;
  }
  throw Refusal(kSystem, path + ": neither a configuration file nor a script");
}

}  // namespace

FileKind kindOfFile(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw systemRefusal(path, errno);
  for (std::string line; std::getline(file, line);) {
    const FileKind kind = kindOfWord(firstWord(line));
    if (kind != FileKind::kNeither) return kind;
  }
  return FileKind::kNeither;
}

std::vector<SettingLine> linesOf(const Session& session, const std::string& state) {
  if (state == "running") return settingLines(*runningImage(session));
  if (state == "saved") return settingLines(*savedImage(session));
  if (state.starts_with(kRevision)) return revisionLines(revisionNumber(state));
  return settingLines(*imageOfFile(session, state));
}

bool keptInNoFile(const std::string& section, const std::string& key) {
  if (section == "interfaces") return key == "management" || key == "router";
  if (section != "items") return false;
  const SettingItem* item = findSettingItem(key);
  return item && item->row->keeping == Keeping::kUntilRebuilt;
}

}  // namespace ctl
