// SPDX-License-Identifier: Apache-2.0
// lint.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/common/config_lint.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/lint/linter.h"
#include "tools/ctl/plain_file.h"
#include "tools/ctl/settings/copy.h"

namespace ctl {
namespace {

constexpr off_t kLongestFile = 8 << 20;  // full tables are a fifth of it
constexpr char kScratch[] = "/run/kestrovectl-lint";
constexpr char kFactoryDefaults[] = "/etc/config/factory.defaults";

struct LintLine {
  std::string path;
  std::optional<uint32_t> ipv6;
};

std::string readWhole(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(file)), {});
  if (!file.is_open() || file.bad()) throw systemRefusal(path, errno != 0 ? errno : EIO);
  return text;
}

std::string configurationText(const std::string& path) {
  const off_t size = requirePlainFile(path, "configuration file");
  if (size > kLongestFile) {
    throw Refusal(kSystem, path + ": " + std::to_string(size) + " bytes, no configuration file (at most " +
                               std::to_string(kLongestFile) + ")");
  }
  const tools::ConfigReport report = tools::inspectConfig(path);
  if (report.error != 0) throw systemRefusal(path, report.error);
  if (report.known == 0) throw Refusal(kSystem, path + ": no line with a known keyword, no configuration file");
  return readWhole(path);
}

bool factoryDefaults(const std::string& path) {
  std::error_code unknown;
  return std::filesystem::equivalent(path, kFactoryDefaults, unknown);
}

// What the lines are read into: the factory defaults of the appliance, or nothing where there is none.
Image startFor(const Session& session, const LintLine& line) {
  Image start = emptyImage();
  try {
    requireStore(session);
    if (!factoryDefaults(line.path)) start = fileImage(session, "/dev/null");
    start->config.ipv6Support = runningImage(session)->config.ipv6Support;
  } catch (const Refusal& refusal) {
    if (refusal.exit() != kNoStore) throw;
  }
  if (line.ipv6) start->config.ipv6Support = *line.ipv6;
  return start;
}

// The library says on standard output what it reads of IPv6 rules.
void silenceLibrary() {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere != -1) dup2(nowhere, STDOUT_FILENO);
}

Json findingsIn(const std::string& text, bool savesReplaceIt) {
  silenceLibrary();
  Json rows = Json::array();
  for (const lint::Finding& finding : lint::Linter(kScratch, savesReplaceIt).run(text)) {
    rows.push_back(
        {{"line", finding.line}, {"column", finding.column}, {"text", finding.text}, {"kind", finding.kind}});
  }
  return rows;
}

std::string findingText(const std::string& path, const Json& finding) {
  return tools::escaped(path + ":" + finding["line"].dump() + ":" + finding["column"].dump() + ": " +
                        finding["text"].get<std::string>()) +
         "\n";
}

void show(const Session& session, const std::string& path, const Json& findings) {
  if (!session.forPeople()) return session.show(findings);
  std::string text;
  for (const Json& finding : findings) text += findingText(path, finding);
  session.print(findings.empty() ? tools::escaped(path) + ": no findings\n" : text);
}

void inspect(const Session& session, const LintLine& line) {
  const std::string text = configurationText(line.path);
  const bool saved = !factoryDefaults(line.path);
  const Json findings = onCopy(startFor(session, line), [&] { return findingsIn(text, saved); }).json;
  show(session, line.path, findings);
  if (!findings.empty()) throw Refusal(kFindings, "");
}

}  // namespace

std::vector<Command> lintCommands() {
  return {command(
      "lint", "What a configuration file says that the store would not take as it stands", inspect,
      {needed("FILE", &LintLine::path, takes::file(), "Configuration file"),
       argument("--ipv6", &LintLine::ipv6, takes::onOrOff(),
                "Whether the appliance has IPv6 support (default: this one's)")},
      "The file is read by the library on a private copy, line by line; nothing is changed. Exit status 4: findings.")};
}

}  // namespace ctl
