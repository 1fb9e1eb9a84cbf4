// dump: the store as the library's text, or as JSON.
#include <vector>

#include "kestrove/kestrove.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/dump_json.h"
#include "tools/ctl/dump_text.h"
#include "tools/ctl/reading.h"

namespace ctl {
namespace {

// Sections by name, with the word of the heading that begins each.
constexpr struct {
  const char* name;
  const char* heading;
} kSections[] = {{"files", "Files"},
                 {"users", "Users"},
                 {"config", "Config"},
                 {"stats", "Operational Stats"},
                 {"notifications", "Notifications"},
                 {"interfaces", "Interface Stats"},
                 {"qos", "Qos Stats"},
                 {"tasks", "Proc Stats"},
                 {"sessions", "Domo Stats"},
                 {"routes", "IPv4 Route Table"},
                 {"routes6", "IPv6 Route Table"},
                 {"rules", "Filter Table"},
                 {"events", "Event log"}};

std::string section;

std::vector<std::string_view> sectionNames() {
  std::vector<std::string_view> names = {"addresses"};
  for (const auto& one : kSections) names.push_back(one.name);
  return names;
}

std::string headingOf(const std::string& name) {
  for (const auto& one : kSections) {
    if (name == one.name) return std::string("-->   ") + one.heading;
  }
  const std::string near = tools::nearest(name, sectionNames());
  throw Refusal(kUsage, name + ": no such section" + (near.empty() ? "" : "; did you mean " + near + "?"));
}

// From the section's heading to the next one.
std::string cut(const std::string& dump, const std::string& name) {
  size_t start = dump.find(headingOf(name));
  if (start == std::string::npos) throw Refusal(kSystem, name + ": not in the dump");
  size_t end = dump.find("\n-->", start);
  return dump.substr(start, end == std::string::npos ? end : end + 1 - start);
}

void dump(const Session& session) {
  requireStore(session);
  if (!session.json) {
    awaitLock(session);
    return session.print(section.empty() ? dumpText() : cut(dumpText(), section));
  }
  if (!section.empty() && section != "addresses") headingOf(section);
  const Json whole = gather(session, dumpJson);
  if (section.empty()) return session.show(whole);
  session.show(Json{{section, whole[section]}});
}

}  // namespace

void addDumpCommands(CLI::App& app, Session& session) {
  CLI::App* dumping = app.add_subcommand("dump", "The whole store as text");
  dumping->add_option("SECTION", section,
                      "files, users, config, stats, notifications, interfaces, qos, tasks, sessions, routes, routes6, "
                      "rules or events; with --json also addresses");
  dumping->callback([&session] { dump(session); });
}

}  // namespace ctl
