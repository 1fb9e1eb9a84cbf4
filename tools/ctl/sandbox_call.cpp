// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/sandbox_call.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "tools/common/program.h"
#include "tools/ctl/place.h"

namespace ctl {
namespace {

std::string needed(const std::string& name, const std::string& folder) {
  std::string path = tools::findProgram(name, folder);
  if (path.empty()) throw Refusal(kSystem, name + " is missing, and the command needs it");
  return path;
}

bool plainFile(const std::string& path) {
  struct stat facts;
  return stat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode);
}

bool namesFile(const std::vector<std::string>& words, size_t at) {
  if (words[at].find('/') != std::string::npos) return true;
  const Place place = placeBehind(grammar(), {words.begin(), words.begin() + static_cast<std::ptrdiff_t>(at)});
  return place.next && place.next->type.completion == Completion::kFiles;
}

// The files that a command names are shown in the sandbox, and named by their whole path.
void showFiles(std::vector<std::string>& line, std::vector<std::string>& words) {
  const std::vector<std::string> given = words;
  for (size_t i = 0; i < words.size(); ++i) {
    if (!namesFile(given, i) || !plainFile(words[i])) continue;
    std::unique_ptr<char, decltype(&free)> whole(realpath(words[i].c_str(), nullptr), free);
    if (!whole) continue;
    words[i] = whole.get();
    line.insert(line.end(), {"--bind", words[i]});
  }
}

}  // namespace

ScratchFolder::ScratchFolder() {
  char name[] = "/tmp/kestrovectl-XXXXXX";
  if (!mkdtemp(name)) throw systemRefusal("scratch folder", errno);
  path_ = name;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

Json runInSandbox(const Session& session, const std::string& inside, const std::string& path,
                  std::vector<std::string> command) {
  std::vector<std::string> line = {needed("kestrove-sandbox", "../sandbox"), "--real", "--ports", "--bind", path};
  showFiles(line, command);
  line.insert(line.end(), {"--", tools::ownFolder() + "/kestrovectl", inside, path, "--", "--source",
                           std::to_string(session.source), "--user", session.user});
  line.insert(line.end(), command.begin(), command.end());
  const tools::Output output = tools::runForOutput(line);
  Json said = Json::parse(output.text, nullptr, false);
  if (output.status == 0 && !said.is_discarded()) return said;
  const std::string name = inside.substr(0, inside.find('-'));
  throw Refusal(kSystem, name + " failed in its sandbox (status " + std::to_string(output.status) + ")");
}

void passStatus(const Session& session, int status) {
  if (status == 0) return;
  const std::string said = "the command itself ends with status " + std::to_string(status);
  throw Refusal(static_cast<Exit>(status), session.json ? "" : said);
}

}  // namespace ctl
