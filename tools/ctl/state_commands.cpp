// SPDX-License-Identifier: Apache-2.0
// state.
#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <sstream>
#include <vector>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/common/program.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/history/recording.h"

namespace ctl {
namespace {

constexpr char kDocuments[] = "/usr/local/apache2/htdocs/";
constexpr char kConfigurationMember[] = "kestrove.conf.configSaved";
constexpr char kRestart[] = "/bin/restartKestrove";

std::vector<std::string> filesLike(const std::string& start, const std::string& end) {
  std::vector<std::string> names;
  DIR* folder = opendir(kDocuments);
  if (!folder) return names;
  while (const dirent* entry = readdir(folder)) {
    std::string name = entry->d_name;
    if (name.starts_with(start) && name.ends_with(end)) names.push_back(kDocuments + name);
  }
  closedir(folder);
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> archives() { return filesLike("config", ".zip"); }

std::vector<std::string> membersOf(const std::string& archive) {
  tools::Output output = tools::runForOutput(std::vector<std::string>{"/usr/bin/unzip", "-Z1", archive});
  if (output.status != 0) throw Refusal(kSystem, archive + ": no archive that unzip can read");
  std::vector<std::string> members;
  std::istringstream lines(output.text);
  for (std::string line; std::getline(lines, line);) members.push_back(line);
  return members;
}

Json stateRows() {
  Json states = Json::array();
  for (const std::string& archive : archives()) {
    states.push_back({{"kind", "archive"}, {"file", archive}, {"members", Json(membersOf(archive))}});
  }
  for (const std::string& script : filesLike("state-", ".txt")) {
    states.push_back({{"kind", "script"}, {"file", script}, {"members", Json::array()}});
  }
  return states;
}

// The library's word alone is not taken: the archive is there, can be read and has the configuration.
std::string savedArchive() {
  const std::vector<std::string> found = archives();
  if (found.empty())
    throw Refusal(kSystem, std::string("the state is not saved: no archive came to be in ") + kDocuments);
  const std::vector<std::string> members = membersOf(found.back());
  if (std::find(members.begin(), members.end(), kConfigurationMember) == members.end()) {
    throw Refusal(kSystem, "the state is not saved: " + found.back() + " lacks the configuration file");
  }
  return found.back();
}

void save(const Session& session) {
  requireStore(session);
  awaitLock(session);
  shm_errno = SHM_OK;
  errno = 0;
  if (saveSystemState(session.source, session.userName()) != 0) {
    if (shm_errno != SHM_OK) throw refusal("the state is not saved");
    throw Refusal(kSystem, "the state is not saved: a command failed, which syslog names");
  }
  const std::string archive = savedArchive();
  if (session.forPeople()) session.done("saved " + archive);
  session.show(stateRows());
}

void list(const Session& session) { session.show(stateRows()); }

// The library unpacks what lies there; members that would land outside the staging folder are refused before.
void refuseEscapes(const std::string& archive) {
  for (const std::string& member : membersOf(archive)) {
    if (member.starts_with('/') || member.find("..") != std::string::npos || member.find('/') != std::string::npos) {
      throw Refusal(kRefused, archive + ": member " + member + " would leave the folder", SHM_EINVAL);
    }
  }
}

std::string onlyArchive() {
  const std::vector<std::string> found = archives();
  if (found.empty()) throw Refusal(kRefused, "there is no saved state", SHM_ENOENT);
  if (found.size() > 1) throw Refusal(kRefused, "there is more than one archive", SHM_EINVAL);
  refuseEscapes(found.front());
  return found.front();
}

void addSwitch(std::vector<std::string>& line, const char* option, uint32_t value) {
  if (value == SHM_ON || value == SHM_OFF) line.insert(line.end(), {option, switchText(value)});
}

// With the files and the platform of the present store, which no saved file has.
std::vector<std::string> rebuildingLine(const std::string& program) {
  const ConfigRecord& config = shm->config;
  std::vector<std::string> line = {
      program, "--replace", "--config", text(config.configFileName), "--event-log", text(config.eventLogFileName)};
  if (config.hardwarePlatform <= 15) line.insert(line.end(), {"--platform", std::to_string(config.hardwarePlatform)});
  addSwitch(line, "--ipv6", config.ipv6Support);
  addSwitch(line, "--wan-opt", config.wanOptSupport);
  const int32_t interval = shm->statistics.accumulationInterval;
  if (interval >= 1 && interval <= 86400) line.insert(line.end(), {"--interval", std::to_string(interval)});
  return line;
}

// What the old store held, before it goes: where the recording ends there is another one.
void begin(const Session& session, Recording& recording) {
  awaitLock(session);
  const tools::Hold hold;
  if (!hold) throw refusal("the store cannot be locked");
  recording.begin();
}

Recorded recordedIn(const Session& session, Recording& recording) {
  shm_detach();
  shm = nullptr;
  attachStore(session);
  awaitLock(session);
  const tools::Hold hold;
  if (!hold) throw refusal("the store cannot be locked");
  return recording.finish();
}

// The programs that hold the old store are restarted as after a start of the appliance.
void rebuild() {
  const std::string program = tools::findProgram("shm-init", "../bin");
  if (program.empty()) throw Refusal(kSystem, "the files are restored; shm-init, which rebuilds the store, is missing");
  const int status = tools::runForOutput(rebuildingLine(program)).status;
  if (status != 0) {
    throw Refusal(kSystem,
                  "the files are restored; shm-init, which rebuilds the store, gave " + std::to_string(status));
  }
  if (access(kRestart, X_OK) != 0) return;
  const int restarted = tools::runForOutput(std::vector<std::string>{kRestart}).status;
  if (restarted != 0) {
    throw Refusal(kSystem, std::string("the store is rebuilt; ") + kRestart + " gave " + std::to_string(restarted));
  }
}

struct LoadLine {
  bool now = false;
};

void load(const Session& session, const LoadLine& line) {
  requireStore(session);
  const std::string archive = onlyArchive();
  std::optional<Recording> recording;
  if (line.now) begin(session, recording.emplace(session));
  awaitLock(session);
  accept(shm_lock(), "lock");
  shm_unlock();
  awaitLock(session);
  if (loadSystemState(session.source, session.userName()) != 0) {
    throw Refusal(kSystem, "the state was not restored wholly; syslog names the command that failed");
  }
  Recorded recorded;
  if (line.now) rebuild();
  if (line.now) recorded = recordedIn(session, *recording);
  recorded.warn();
  session.done("restored " + archive +
               (line.now
                    ? "; the store is built anew from it"
                    : "; it takes effect when the store is next built, and the next change overwrites the restored "
                      "configuration file with what the store holds now (state load --now builds it at once)"));
  if (!recorded.missing.empty()) throw Refusal(kNotSaved, "");
}

}  // namespace

std::vector<Command> stateCommands() {
  return {group("state", "Whole saved states"),
          changing("state save", "Save the state; an earlier one is replaced", save),
          changing("state load", "Restore the saved files; the next change overwrites them", load,
                   {flag("--now", &LoadLine::now, "Build the store anew from them at once, and restart the engine")}),
          command("state list", "What is saved", list)};
}

}  // namespace ctl
