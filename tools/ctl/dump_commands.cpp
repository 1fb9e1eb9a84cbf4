// SPDX-License-Identifier: Apache-2.0
// dump: the store as the library's text, or as JSON.
#include <array>
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

struct DumpLine {
  std::string section;
};

// The words that a shell may offer: those of the text, and the one that only JSON has.
constexpr auto kSectionWords = [] {
  std::array<NamedNumber, std::size(kSections) + 1> words = {{{"addresses", 0}}};
  for (size_t i = 0; i < std::size(kSections); ++i) words[i + 1] = {kSections[i].name, static_cast<int>(i + 1)};
  return words;
}();

std::vector<std::string_view> sectionNames() {
  std::vector<std::string_view> names;
  for (const NamedNumber& one : kSectionWords) names.push_back(one.name);
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

void dump(const Session& session, const DumpLine& line) {
  const std::string& section = line.section;
  requireStore(session);
  if (session.forPeople()) {
    awaitLock(session);
    return session.print(section.empty() ? dumpText() : cut(dumpText(), section));
  }
  if (!section.empty() && section != "addresses") headingOf(section);
  const Json whole = gather(session, dumpJson);
  if (section.empty()) return session.show(whole);
  session.show(Json{{section, whole[section]}});
}

}  // namespace

std::vector<Command> dumpCommands() {
  Type section = takes::text().from(Completion::kWords);
  section.words = kSectionWords;
  return {command("dump", "The whole store as text", dump,
                  {option("SECTION", &DumpLine::section, section,
                          "files, users, config, stats, notifications, interfaces, qos, tasks, sessions, routes, "
                          "routes6, rules or events; with --json also addresses")})};
}

}  // namespace ctl
