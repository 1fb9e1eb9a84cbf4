// SPDX-License-Identifier: Apache-2.0
// The settings of a store as lines of kestrovectl, and back.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/settings/image.h"

namespace ctl {

// One setting: what it is called within its section, and the command that makes it.
struct SettingLine {
  std::string section;
  std::string key;
  std::string text;
  bool operator==(const SettingLine&) const = default;
};

// The sections in the order of their lines.
inline constexpr const char* kSections[] = {"items",     "interfaces", "users",   "addresses6",
                                            "addresses", "routes",     "routes6", "rules"};

// Whatever an exported function can set and a front end may want back. Left out: what the library or the hardware sets
// by itself (the marks of policy routing, the state of the relay, the current web session, log-in stamps, what became
// of a route or an address in the kernel). A switch that nothing has set has no line. The rules are in their order and
// their lines carry no position: each is added in front of the default rule.
std::vector<SettingLine> settingLines(const ShmData& store);
// The same without routes and rules, which are many.
std::vector<SettingLine> smallSettingLines(const ShmData& store);
// "route add 10.0.0.0/8 192.168.1.1".
std::string routeLine(const RouteEntry& route);
std::string routeLine(const Route6Entry& route);
// "rule add last --from 10.0.0.0/8 --kbps 512": all that a rule is but its place.
std::string ruleLine(const FilterRule& rule);
// The keys of routes.
std::string keyOf(const RouteEntry& route);
std::string keyOf(const Route6Entry& route);

// The inverse: an otherwise empty store with these settings, or that store with its settings replaced by these. Throws
// kUsage for a line that settingLines() does not write.
Image imageFromLines(const std::vector<SettingLine>& lines);
Image imageFromLines(const std::vector<SettingLine>& lines, const ShmData& rest);

// One line of the text alone, with its section and key found out.
SettingLine settingLineOf(const std::string& text);

}  // namespace ctl
