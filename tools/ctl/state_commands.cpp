// state, dhcp.
#include <dirent.h>

#include <algorithm>
#include <sstream>
#include <vector>

#include "kestrove/kestrove.h"
#include "tools/common/program.h"
#include "tools/ctl/commands.h"

namespace ctl {
namespace {

constexpr char kDocuments[] = "/usr/local/apache2/htdocs/";

std::string interfaceName;
int timeoutSeconds = 30;

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

std::vector<std::string> membersOf(const std::string& archive) {
  tools::Output output = tools::runForOutput(std::vector<std::string>{"/usr/bin/unzip", "-Z1", archive});
  if (output.status != 0) throw Refusal(kSystem, archive + ": no archive that unzip can read");
  std::vector<std::string> members;
  std::istringstream lines(output.text);
  for (std::string line; std::getline(lines, line);) members.push_back(line);
  return members;
}

void list(const Session& session) {
  Json states = Json::array();
  for (const std::string& archive : filesLike("config", ".zip")) {
    states.push_back({{"kind", "archive"}, {"file", archive}, {"members", Json(membersOf(archive))}});
  }
  for (const std::string& script : filesLike("state-", ".txt")) {
    states.push_back({{"kind", "script"}, {"file", script}, {"members", Json::array()}});
  }
  session.show(states);
}

void save(const Session& session) {
  requireStore();
  accept(saveSystemState(session.source, session.userName()), "the state cannot be saved");
  list(session);
}

// The library unpacks what lies there; members that would land outside the staging folder are refused before.
void refuseEscapes(const std::string& archive) {
  for (const std::string& member : membersOf(archive)) {
    if (member.starts_with('/') || member.find("..") != std::string::npos || member.find('/') != std::string::npos) {
      throw Refusal(kRefused, archive + ": member " + member + " would leave the folder", SHM_EINVAL);
    }
  }
}

void load(const Session& session) {
  requireStore();
  std::vector<std::string> archives = filesLike("config", ".zip");
  if (archives.empty()) throw Refusal(kRefused, "there is no saved state", SHM_ENOENT);
  if (archives.size() > 1) throw Refusal(kRefused, "there is more than one archive", SHM_EINVAL);
  refuseEscapes(archives.front());
  if (loadSystemState(session.source, session.userName()) != 0) {
    throw Refusal(kSystem, "the state was not restored wholly; syslog names the command that failed");
  }
  session.done("restored " + archives.front() + "; it takes effect when the store is next built");
}

// The library's callback carries no context: the kind comes through its first argument, the rows through here.
Json leased;

int takeSetting(uint32_t* kind, const char* value) {
  constexpr const char* kKinds[] = {"address", "netmask", "gateways", "server", "nameServers", "domain", "other"};
  if (*kind < 6) leased[kKinds[*kind]] = value;
  return 0;
}

void dhcp(const Session& session) {
  uint32_t kind = 0;
  leased = Json{{"interface", interfaceName}};
  if (dhcp_start(interfaceName.c_str(), timeoutSeconds, takeSetting, &kind) != 0) {
    throw Refusal(kSystem, interfaceName + ": no lease within " + std::to_string(timeoutSeconds) + " seconds");
  }
  session.show(leased);
}

}  // namespace

void addStateCommands(CLI::App& app, Session& session) {
  CLI::App* state = app.add_subcommand("state", "Whole saved states");
  state->require_subcommand(1);
  state->add_subcommand("save", "Save the state; an earlier one is replaced")->callback([&session] { save(session); });
  state->add_subcommand("load", "Restore the saved files")->callback([&session] { load(session); });
  state->add_subcommand("list", "What is saved")->callback([&session] { list(session); });

  CLI::App* leasing = app.add_subcommand("dhcp", "Obtain an address for an interface");
  leasing->add_option("INTERFACE", interfaceName, "Name of the interface")->required();
  leasing->add_option("--timeout", timeoutSeconds, "Seconds; a lease that comes only then is none")
      ->check(CLI::Range(1, 3600));
  leasing->callback([&session] { dhcp(session); });
}

}  // namespace ctl
