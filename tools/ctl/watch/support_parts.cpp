// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/watch/support_parts.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include "kestrove/kestrove.h"
#include "tools/common/program.h"
#include "tools/common/version_text.h"
#include "tools/ctl/check.h"
#include "tools/ctl/dump_json.h"
#include "tools/ctl/dump_text.h"
#include "tools/ctl/event_rows.h"
#include "tools/ctl/home.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/settings/difference.h"
#include "tools/ctl/settings/image.h"
#include "tools/ctl/watch/lock_waiters.h"
#include "tools/ctl/watch/metric.h"

namespace ctl {
namespace {

constexpr const char* kAgentFiles[] = {"/var/config/snmpd.conf", "/var/net-snmp/snmpd.conf", "/etc/snmp/snmpd.conf"};
constexpr const char* kAccountFiles[] = {"/etc/passwd", "/etc/shadow", "/etc/gshadow"};
constexpr char kFactory[] = "/etc/config/factory.defaults";
constexpr char kSessionField[] = "httpEncryptedId";
constexpr uintmax_t kLargestFile = 4 << 20;

// The machine's own view, each by the program that an engineer would ask.
constexpr struct {
  const char* name;
  const char* line;
} kPrograms[] = {{"kernel/version.txt", "uname -a; cat /etc/os-release"},
                 {"kernel/links.txt", "ip -details -statistics link"},
                 {"kernel/addresses.txt", "ip address"},
                 {"kernel/routes.txt", "ip route show table all"},
                 {"kernel/routes6.txt", "ip -6 route show table all"},
                 {"kernel/rules.txt", "ip rule; ip -6 rule"},
                 {"kernel/neighbours.txt", "ip neighbour"},
                 {"kernel/bridges.txt", "brctl show"},
                 {"kernel/filter.txt", "iptables-save"},
                 {"kernel/filter6.txt", "ip6tables-save"},
                 {"kernel/processes.txt", "ps -eo pid,ppid,stat,etime,rss,comm"},
                 {"kernel/segments.txt", "ipcs -m"},
                 {"kernel/disks.txt", "df -P"},
                 {"kernel/locks.txt", "cat /proc/locks"},
                 {"kernel/devices.txt", "cat /proc/net/dev"},
                 {"kernel/memory.txt", "cat /proc/meminfo /proc/loadavg /proc/uptime"}};

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw systemRefusal(path, errno != 0 ? errno : ENOENT);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// Empty where there is none: for learning.
std::string contentsOrNone(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  if (file) text << file.rdbuf();
  return text.str();
}

std::string outputOf(const char* line) {
  const tools::Output output = tools::runForOutput(("exec 2>&1; timeout 20 sh -c '" + std::string(line) + "'").c_str());
  if (output.status == 0) return output.text;
  throw Refusal(kSystem, std::string(line) + ": ended with " + std::to_string(output.status));
}

// The store is read once; where that fails, each part that needs it says why.
struct Sources {
  Sources(const Session& itsSession, Scrubber& itsScrubber)
      : session(itsSession), scrubber(itsScrubber), facts(readMetricFacts(session)) {}
  const ShmData& store() const {
    if (facts.refusal) throw Refusal(*facts.refusal);
    return **facts.store;
  }
  std::string configurationFile() const {
    return facts.store ? text((*facts.store)->config.configFileName) : "/etc/config/kestrove.conf";
  }

  const Session& session;
  Scrubber& scrubber;
  MetricFacts facts;
};

void learnSecrets(const Sources& sources) {
  Scrubber& scrubber = sources.scrubber;
  if (sources.facts.store) {
    scrubber.learn(text((*sources.facts.store)->config.httpEncryptedId));
    scrubber.learn(text((*sources.facts.store)->oldAdminPassword));
  }
  for (const char* path : kAccountFiles) scrubber.learnAccounts(contentsOrNone(path));
  for (const char* path : kAgentFiles) scrubber.learnAgent(contentsOrNone(path));
  for (const std::string& path :
       {sources.configurationFile(), sources.configurationFile() + ".bak", std::string(kFactory)}) {
    scrubber.learnConfiguration(contentsOrNone(path));
  }
}

// The line of the session goes whole: what it holds may be shorter than what can be looked for elsewhere.
std::string withoutSession(const std::string& dump) {
  const size_t label = dump.find(std::string("  ") + kSessionField + ":");
  if (label == std::string::npos) return dump;
  const size_t end = dump.find("\n  ", label + 1);
  const std::string line = std::string("  ") + kSessionField + ": " + kRemoved;
  return dump.substr(0, label) + line + (end == std::string::npos ? "\n" : dump.substr(end));
}

std::string dumpPart(const Sources& sources) {
  sources.store();
  awaitLock(sources.session);
  return withoutSession(dumpText());
}

std::string dataPart(const Sources& sources) {
  sources.store();
  Json dump = gather(sources.session, dumpJson);
  dump["config"][kSessionField] = kRemoved;
  return jsonText(dump, 1) + "\n";
}

std::string eventsPart(const Sources& sources) {
  sources.store();
  const Json lines = gather(sources.session, [] {
    Json all = Json::array();
    for (uint32_t index = 0; index < eventCount(); ++index) all.push_back(eventLine(index));
    return all;
  });
  std::string text;
  for (const Json& line : lines) text += line.get<std::string>() + "\n";
  return text;
}

std::string findingsPart(const Sources& sources) {
  std::string text;
  for (const Finding& finding : checkStore(sources.store())) text += finding.table + ": " + finding.text + "\n";
  return text.empty() ? "every table is sound\n" : text;
}

std::string unsavedPart(const Sources& sources) {
  const std::string text = differenceText(compare(*savedImage(sources.session), sources.store()), false);
  return text.empty() ? "nothing is unsaved\n" : text;
}

std::string versionsPart(const Sources& sources) {
  std::string text = tools::versionText("kestrovectl") + "\n";
  if (!sources.facts.store) return text;
  const ConfigRecord& config = sources.store().config;
  return text + "engine " + ctl::text(config.kestroveFullVersion) + "\nprotocol engine " +
         ctl::text(config.drelmFullVersion) + "\nproduct " + getProductName(config.productId) + "\nunit " +
         ctl::text(config.unitId) + "\n";
}

std::string lockPart(const Sources& sources) {
  const tools::LockAnswer& lock = sources.facts.lock;
  if (lock.state != tools::LockState::kHeld) return "nobody else held the store's lock\n";
  return "the store's lock was held by " + tools::describe(lock.holder) + "; " +
         std::to_string(sources.facts.lockWaiters) + " waited for it\n";
}

// Of this program's own files the texts: an image of a store would hold what the scrubber cannot see.
std::string homePart(const std::string& path) {
  std::string text = contents(path);
  if (text.find('\0') != std::string::npos) throw Refusal(kSystem, path + ": no text; left out for its secrets");
  return text;
}

std::vector<std::string> homeFiles() {
  std::vector<std::string> paths;
  std::error_code error;
  const std::string folder = homePath();
  if (folder.empty()) return paths;
  for (std::filesystem::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const bool plain = entry->is_regular_file(error) && !entry->is_symlink(error);
    if (plain && entry->file_size(error) <= kLargestFile) paths.push_back(entry->path());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

using Shared = std::shared_ptr<const Sources>;

// A part whose text is cleaned as any other.
SupportPart part(const Shared& sources, const std::string& name, const std::function<std::string()>& text) {
  return {name, [sources, text] { return sources->scrubber.clean(text()); }};
}

void addStoreParts(std::vector<SupportPart>& parts, const Shared& sources) {
  constexpr struct {
    const char* name;
    std::string (*text)(const Sources&);
  } kParts[] = {{"versions.txt", versionsPart}, {"lock.txt", lockPart},     {"dump.txt", dumpPart},
                {"dump.json", dataPart},        {"events.txt", eventsPart}, {"check.txt", findingsPart},
                {"unsaved.txt", unsavedPart}};
  for (const auto& one : kParts)
    parts.push_back(part(sources, one.name, [sources, one] { return one.text(*sources); }));
  parts.push_back(part(sources, "metrics.txt", [sources] { return metricsText(sources->facts); }));
}

using Cleaning = std::string (Scrubber::*)(const std::string&) const;

void addFile(std::vector<SupportPart>& parts, const Shared& sources, const std::string& path, Cleaning clean) {
  if (!std::filesystem::exists(path)) return;
  parts.push_back({"files" + path, [sources, path, clean] { return (sources->scrubber.*clean)(contents(path)); }});
}

void addFiles(std::vector<SupportPart>& parts, const Shared& sources) {
  addFile(parts, sources, "/etc/passwd", &Scrubber::cleanAccounts);
  for (const char* path : kAgentFiles) addFile(parts, sources, path, &Scrubber::cleanAgent);
  for (const std::string& path :
       {sources->configurationFile(), sources->configurationFile() + ".bak", std::string(kFactory)}) {
    addFile(parts, sources, path, &Scrubber::cleanConfiguration);
  }
  const std::string home = homePath();
  for (const std::string& path : homeFiles()) {
    parts.push_back(part(sources, "home" + path.substr(home.size()), [path] { return homePart(path); }));
  }
}

}  // namespace

std::vector<SupportPart> supportParts(const Session& session, Scrubber& scrubber) {
  const auto sources = std::make_shared<const Sources>(session, scrubber);
  learnSecrets(*sources);
  std::vector<SupportPart> parts;
  addStoreParts(parts, sources);
  addFiles(parts, sources);
  for (const auto& program : kPrograms) {
    parts.push_back(part(sources, program.name, [program] { return outputOf(program.line); }));
  }
  return parts;
}

}  // namespace ctl
