// dump: the store as the library's text, or as JSON.
#include <cstdlib>
#include <vector>

#include "kestrove/kestrove.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/dump_json.h"

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

std::string wholeDump() {
  char* text = nullptr;
  size_t size = 0;
  FILE* stream = open_memstream(&text, &size);
  if (!stream) throw Refusal(kSystem, "no memory for the dump");
  int result = dumpSharedMemory(stream);
  fclose(stream);
  std::string dump(text, size);
  free(text);
  accept(result, "dump");
  return dump;
}

std::string headingOf(const std::string& name) {
  for (const auto& one : kSections) {
    if (name == one.name) return std::string("-->   ") + one.heading;
  }
  throw Refusal(kUsage, name + ": no such section");
}

// From the section's heading to the next one.
std::string cut(const std::string& dump, const std::string& name) {
  size_t start = dump.find(headingOf(name));
  if (start == std::string::npos) throw Refusal(kSystem, name + ": not in the dump");
  size_t end = dump.find("\n-->", start);
  return dump.substr(start, end == std::string::npos ? end : end + 1 - start);
}

void dump(const Session& session) {
  requireStore();
  if (!session.json) {
    std::string text = section.empty() ? wholeDump() : cut(wholeDump(), section);
    fwrite(text.data(), 1, text.size(), session.out);
    return;
  }
  Json whole = dumpJson();
  if (section.empty()) return session.show(whole);
  if (!whole.contains(section)) throw Refusal(kUsage, section + ": no such section");
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
