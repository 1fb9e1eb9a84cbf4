// SPDX-License-Identifier: Apache-2.0
// support.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "tools/common/program.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/moment.h"
#include "tools/ctl/watch/new_file.h"
#include "tools/ctl/watch/support_parts.h"

namespace ctl {
namespace {

constexpr char kFolder[] = "kestrove-support";
constexpr mode_t kForOwner = 0600;

// A folder of this process alone, gone with all that is in it.
class Stage {
 public:
  Stage() {
    const char* base = getenv("TMPDIR");
    path_ = std::string(base && *base ? base : "/tmp") + "/kestrovectl-support-XXXXXX";
    if (!mkdtemp(path_.data())) throw systemRefusal(path_, errno);
  }
  ~Stage() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;
  const std::string& path() const { return path_; }

  void add(const std::string& name, const std::string& text) const {
    const std::filesystem::path path = std::filesystem::path(path_) / kFolder / name;
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    if (error) throw systemRefusal(path.parent_path(), error.value());
    NewFile file(path, kForOwner);
    file.write(text);
    file.putInPlace();
  }

 private:
  std::string path_;
};

struct Gathered {
  Json parts = Json::array();
  Json missing = Json::array();
};

Gathered gatherInto(const Stage& stage, const std::vector<SupportPart>& parts, const Scrubber& scrubber) {
  Gathered gathered;
  for (const SupportPart& part : parts) {
    std::string text;
    try {
      text = part.text();
    } catch (const Refusal& refusal) {
      gathered.missing.push_back({{"part", part.name}, {"reason", scrubber.clean(refusal.what())}});
      continue;
    }
    stage.add(part.name, text);
    gathered.parts.push_back(part.name);
  }
  return gathered;
}

std::string contentsText(const Gathered& gathered) {
  std::string text =
      "Made at " + momentText(time(nullptr)) + ". Hashes, passwords, communities and session ids are out.\n";
  for (const Json& part : gathered.parts) text += part.get<std::string>() + "\n";
  for (const Json& one : gathered.missing) {
    text += "missing: " + one["part"].get<std::string>() + ": " + one["reason"].get<std::string>() + "\n";
  }
  return text;
}

// Under the new file's own name, whose mode stays.
void pack(const Stage& stage, const std::string& archive) {
  const tools::Output output = tools::runForOutput(std::vector<std::string>{
      "tar", "-C", stage.path(), "--owner=0", "--group=0", "--numeric-owner", "-czf", archive, kFolder});
  if (output.status != 0) throw Refusal(kSystem, "tar gave " + std::to_string(output.status));
}

struct SupportLine {
  std::string file;
};

void support(const Session& session, const SupportLine& line) {
  const std::string path = std::filesystem::absolute(line.file);
  NewFile archive(path, kForOwner);
  const Stage stage;
  Scrubber scrubber;
  const Gathered gathered = gatherInto(stage, supportParts(session, scrubber), scrubber);
  stage.add("CONTENTS.txt", contentsText(gathered));
  pack(stage, archive.name());
  archive.putInPlace();
  for (const Json& one : gathered.missing) {
    if (session.forPeople())
      warn("not in it: " + one["part"].get<std::string>() + ": " + one["reason"].get<std::string>());
  }
  if (session.forPeople()) return session.done("wrote " + line.file);
  session.show({{"done", "wrote " + line.file}, {"parts", gathered.parts}, {"missing", gathered.missing}});
}

}  // namespace

std::vector<Command> supportCommands() {
  return {command("support", "Everything that a support engineer asks for, in one archive without secrets", support,
                  {needed("FILE", &SupportLine::file, takes::file(), "The archive, NAME.tar.gz; for its owner alone")},
                  "Store, events, statistics, own files of this program, kernel and versions. Hashes of passwords, "
                  "passwords, communities and session ids are taken out. What cannot be gathered is named.")};
}

}  // namespace ctl
