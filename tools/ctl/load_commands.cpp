// SPDX-License-Identifier: Apache-2.0
// load.
#include <cerrno>
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/common/config_lint.h"
#include "tools/common/hold.h"
#include "tools/common/loading_note.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/history/recording.h"
#include "tools/ctl/plain_file.h"
#include "tools/ctl/tables_back.h"

namespace ctl {
namespace {

constexpr char kNothingElse[] =
    "nothing is saved, and nothing is applied to the kernel or told to the engine; kestrovectl save writes it to the "
    "configuration file";

// A file that says nothing would only look as if it had been loaded.
tools::ConfigReport requireConfiguration(const std::string& path) {
  requirePlainFile(path, "configuration file");
  tools::ConfigReport report = tools::inspectConfig(path);
  if (report.error != 0) throw systemRefusal(path, report.error);
  if (report.known == 0) throw Refusal(kSystem, path + ": no line with a known keyword, no configuration file");
  return report;
}

struct RowCounts {
  const char* name;
  int32_t count;
};

std::vector<RowCounts> countRows() {
  auto routes = [](const auto& slots) {
    int32_t used = 0;
    for (const auto& slot : slots) used += slot.inUse == 1;
    return used;
  };
  return {{"users", shm->config.userCount},           {"management addresses", shm->managementAddressCount},
          {"IPv6 addresses", shm->ip6Count},          {"routes", routes(shm->routes.slot)},
          {"IPv6 routes", routes(shm->routes6.slot)}, {"rules", shm->filterTable.ruleCount}};
}

Json addedSince(const std::vector<RowCounts>& before) {
  Json added = Json::object();
  const std::vector<RowCounts> now = countRows();
  for (size_t i = 0; i < now.size(); ++i) added[now[i].name] = now[i].count - before[i].count;
  return added;
}

std::string addedText(const Json& added) {
  std::string text;
  for (const auto& [name, count] : added.items()) {
    if (count != 0) text += (text.empty() ? "" : ", ") + count.dump() + " " + name;
  }
  return text.empty() ? "no rows added" : text + " added";
}

Json readIntoTables(const Session& session, const std::string& path, Recorded& recorded) {
  std::optional<tools::Hold> hold;
  Recording recording(session);  // ends with the store still held
  awaitLock(session);
  if (!hold.emplace()) throw refusal("the store cannot be locked");
  recording.begin();
  const std::vector<RowCounts> before = countRows();
  TablesBack back;
  tools::LoadingNote note(shm->operationalState);
  if (!note.written()) warn("the load cannot be noted; a kill now would leave state 4");
  errno = 0;
  const int result = load_shared_memory(path.c_str());
  if (result < 0) throw systemRefusal(path, errno != 0 ? errno : EIO);
  recorded = recording.finish();
  return addedSince(before);
}

Json resultOf(const std::string& path, const Json& added, const tools::ConfigReport& report, const Recorded& recorded) {
  Json faults = Json::array();
  for (const tools::ConfigFault& fault : report.faults) faults.push_back({{"line", fault.line}, {"fault", fault.text}});
  Json result = {
      {"done", "loaded " + path}, {"added", added}, {"faults", faults}, {"saved", false}, {"applied", false}};
  recorded.addTo(result);
  return result;
}

struct LoadLine {
  std::string path;
};

void load(const Session& session, const LoadLine& line) {
  const std::string& path = line.path;
  requireStore(session);
  const tools::ConfigReport report = requireConfiguration(path);
  Recorded recorded;
  const Json added = readIntoTables(session, path, recorded);
  if (!report.faults.empty()) warn(path + ": not taken as it stands: " + tools::faultText(report));
  if (session.forPeople()) {
    recorded.warn();
    session.done("loaded " + path + ": " + addedText(added) + "; " + kNothingElse);
    session.print(recorded.text());
  } else {
    session.show(resultOf(path, added, report, recorded));
  }
  if (!recorded.missing.empty()) throw Refusal(kNotSaved, "");
}

}  // namespace

std::vector<Command> loadCommands() {
  return {changing("load", "Read a configuration file into the store; saves and applies nothing", load,
                   {needed("FILE", &LoadLine::path, takes::file(), "Configuration file")},
                   "An interrupt puts the tables back as they were.")};
}

}  // namespace ctl
