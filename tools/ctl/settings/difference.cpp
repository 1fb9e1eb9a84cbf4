// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/settings/difference.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <unordered_map>

#include "kestrove/codes.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/settings/route_walk.h"

namespace ctl {
namespace {

using Section = std::span<const SettingLine>;

// The lines of a section stand together.
Section sectionOf(const std::vector<SettingLine>& lines, const char* name) {
  auto inside = [name](const SettingLine& line) { return line.section == name; };
  auto first = std::find_if(lines.begin(), lines.end(), inside);
  auto last = std::find_if_not(first, lines.end(), inside);
  return {first, last};
}

void compareByKey(Section before, Section after, std::vector<SettingChange>& changes) {
  std::unordered_map<std::string, const SettingLine*> had;
  for (const SettingLine& line : before) had[line.key] = &line;
  for (const SettingLine& line : after) {
    auto old = had.find(line.key);
    if (old == had.end()) {
      changes.push_back({line.section, line.key, {}, line.text});
      continue;
    }
    if (old->second->text != line.text) changes.push_back({line.section, line.key, old->second->text, line.text});
    had.erase(old);
  }
  for (const SettingLine& line : before) {
    auto left = had.find(line.key);
    if (left != had.end() && left->second == &line) changes.push_back({line.section, line.key, line.text, {}});
  }
}

std::vector<std::string_view> textsOf(Section lines) {
  std::vector<std::string_view> texts;
  texts.reserve(lines.size());
  for (const SettingLine& line : lines) texts.emplace_back(line.text);
  return texts;
}

// A removed line and an added one of the same gap are one that was changed.
void compareInOrder(Section before, Section after, std::vector<SettingChange>& changes) {
  for (const Gap& gap : gapsBetween(textsOf(before), textsOf(after))) {
    for (size_t i = 0; i < std::max(gap.removed, gap.added); ++i) {
      const SettingLine* old = i < gap.removed ? &before[gap.before + i] : nullptr;
      const SettingLine* fresh = i < gap.added ? &after[gap.after + i] : nullptr;
      SettingChange change = {fresh ? fresh->section : old->section, fresh ? fresh->key : old->key, {}, {}};
      if (old) change.before = old->text;
      if (fresh) change.after = fresh->text;
      changes.push_back(std::move(change));
    }
  }
}

// Equal where the keys of the lines are equal.
using RouteKey = std::array<uint32_t, 5>;

RouteKey rawKey(const RouteEntry& route) { return {route.destination, route.netmask}; }

RouteKey rawKey(const Route6Entry& route) {
  RouteKey key = {};
  memcpy(key.data(), route.destination, sizeof route.destination);
  key[4] = route.prefixLength;
  return key;
}

struct KeyHash {
  size_t operator()(const RouteKey& key) const {
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(key.data()), sizeof key});
  }
};

template <typename Route>
bool sameRoute(const Route& a, const Route& b) {
  const bool off = a.status == SHM_ROUTE_DISABLED;
  return memcmp(&a.gateway, &b.gateway, sizeof a.gateway) == 0 && off == (b.status == SHM_ROUTE_DISABLED);
}

template <typename Route>
void compareRoutes(const char* section, const std::vector<const Route*>& before, const std::vector<const Route*>& after,
                   std::vector<SettingChange>& changes) {
  std::unordered_map<RouteKey, const Route*, KeyHash> had;
  for (const Route* route : before) had[rawKey(*route)] = route;
  for (const Route* route : after) {
    auto old = had.find(rawKey(*route));
    if (old == had.end()) {
      changes.push_back({section, keyOf(*route), {}, routeLine(*route)});
      continue;
    }
    if (!sameRoute(*old->second, *route))
      changes.push_back({section, keyOf(*route), routeLine(*old->second), routeLine(*route)});
    had.erase(old);
  }
  for (const Route* route : before) {
    auto left = had.find(rawKey(*route));
    if (left != had.end() && left->second == route) changes.push_back({section, keyOf(*route), routeLine(*route), {}});
  }
}

// The rules but the default rule, without what their lines leave out.
std::vector<FilterRule> comparable(const FilterTable& table) {
  const int32_t count = std::clamp<int32_t>(table.ruleCount, 1, SHM_RULES);
  std::vector<FilterRule> rules(table.rule, table.rule + count - 1);
  for (FilterRule& rule : rules) {
    const bool six = rule.ipVersion == SHM_FAMILY_IPV6;
    rule.order = 0;
    if (six || rule.ipVersion == SHM_FAMILY_ANY) rule.srcAddr = rule.srcMask = rule.dstAddr = rule.dstMask = 0;
    if (six) continue;
    memset(rule.srcAddr6, 0, sizeof rule.srcAddr6);
    memset(rule.dstAddr6, 0, sizeof rule.dstAddr6);
    rule.srcPrefixLen6 = rule.dstPrefixLen6 = 0;
  }
  return rules;
}

std::vector<std::string_view> viewsOf(const std::vector<FilterRule>& rules) {
  std::vector<std::string_view> views;
  views.reserve(rules.size());
  for (const FilterRule& rule : rules) views.emplace_back(reinterpret_cast<const char*>(&rule), sizeof rule);
  return views;
}

void compareRules(const FilterTable& before, const FilterTable& after, std::vector<SettingChange>& changes) {
  for (const Gap& gap : ruleGaps(before, after)) {
    for (size_t i = 0; i < std::max(gap.removed, gap.added); ++i) {
      const bool old = i < gap.removed;
      const bool fresh = i < gap.added;
      SettingChange change = {"rules", std::to_string(fresh ? gap.after + i : gap.before + i), {}, {}};
      if (old) change.before = ruleLine(before.rule[gap.before + i]);
      if (fresh) change.after = ruleLine(after.rule[gap.after + i]);
      changes.push_back(std::move(change));
    }
  }
}

bool ordered(const char* section) { return std::string_view(section) == "rules"; }

class Unified {
 public:
  explicit Unified(bool colours) : colours_(colours) {}

  std::string of(const Difference& difference) {
    for (const SettingChange& change : difference.changes) {
      heading(change);
      if (change.before) line('-', "\x1b[31m", *change.before);
      if (change.after) line('+', "\x1b[32m", *change.after);
    }
    return std::move(text_);
  }

 private:
  // Rules say where they stand: their lines do not.
  void heading(const SettingChange& change) {
    std::string name = change.section;
    if (ordered(name.c_str())) name += " " + change.key;
    if (name == heading_) return;
    heading_ = name;
    text_ += painted("\x1b[36m", "@@ " + name + " @@") + "\n";
  }
  void line(char mark, const char* colour, const std::string& text) {
    text_ += painted(colour, mark + tools::escaped(text)) + "\n";
  }
  std::string painted(const char* colour, const std::string& text) const {
    return colours_ ? colour + text + "\x1b[0m" : text;
  }

  bool colours_;
  std::string text_, heading_;
};

std::string sideText(const Difference& difference, std::optional<std::string> SettingChange::*side) {
  std::string text;
  for (const SettingChange& change : difference.changes) {
    if (change.*side) text += *(change.*side) + "\n";
  }
  return text;
}

Json orNull(const std::optional<std::string>& text) { return text ? Json(*text) : Json(nullptr); }

}  // namespace

Difference compare(const std::vector<SettingLine>& before, const std::vector<SettingLine>& after) {
  Difference difference;
  for (const char* name : kSections) {
    const auto compareSection = ordered(name) ? compareInOrder : compareByKey;
    compareSection(sectionOf(before, name), sectionOf(after, name), difference.changes);
  }
  return difference;
}

// Texts are made of what differs alone: a table may hold thousands that are equal.
Difference compare(const ShmData& before, const ShmData& after) {
  Difference difference = compare(smallSettingLines(before), smallSettingLines(after));
  compareRoutes("routes", routesOf(before), routesOf(after), difference.changes);
  compareRoutes("routes6", routes6Of(before), routes6Of(after), difference.changes);
  compareRules(before.filterTable, after.filterTable, difference.changes);
  return difference;
}

std::vector<Gap> ruleGaps(const FilterTable& before, const FilterTable& after) {
  const std::vector<FilterRule> had = comparable(before);
  const std::vector<FilterRule> has = comparable(after);
  return gapsBetween(viewsOf(had), viewsOf(has));
}

std::string differenceText(const Difference& difference, bool colours) { return Unified(colours).of(difference); }

Json differenceJson(const Difference& difference) {
  Json changes = Json::array();
  for (const SettingChange& change : difference.changes) {
    changes.push_back({{"section", change.section},
                       {"key", change.key},
                       {"before", orNull(change.before)},
                       {"after", orNull(change.after)}});
  }
  return {{"changed", !difference.empty()},
          {"diff",
           {{"before", sideText(difference, &SettingChange::before)},
            {"after", sideText(difference, &SettingChange::after)}}},
          {"changes", changes}};
}

}  // namespace ctl
