// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/script/rule_target.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <unordered_map>

#include "kestrove/kestrove.h"
#include "tools/ctl/script/wish.h"
#include "tools/ctl/session.h"

namespace ctl {
namespace {

std::string_view bytesOf(const FilterRule& rule) { return {reinterpret_cast<const char*>(&rule), sizeof rule}; }

bool same(const FilterRule& a, const FilterRule& b) { return bytesOf(a) == bytesOf(b); }

size_t inFrontOfDefault(const FilterTable& table) {
  return static_cast<size_t>(std::clamp<int32_t>(table.ruleCount, 1, SHM_RULES) - 1);
}

// How many there are of each rule.
class Stock {
 public:
  bool take(const FilterRule& rule) {
    const auto found = count_.find(bytesOf(rule));
    if (found == count_.end() || found->second == 0) return false;
    --found->second;
    return true;
  }
  void add(const FilterRule& rule) { ++count_[bytesOf(rule)]; }

 private:
  std::unordered_map<std::string_view, size_t> count_;
};

}  // namespace

// Inserted into a table of nothing but a default rule, where there always is room.
FilterRule normalised(const FilterRule& given) {
  FilterTable& table = shm->filterTable;
  const int32_t count = table.ruleCount;
  const FilterRule first = table.rule[0];
  const FilterRule second = table.rule[1];
  FilterRule rule = given;
  table.ruleCount = 1;
  const int result = insertRule(0, &rule);
  table.ruleCount = count;
  table.rule[0] = first;
  table.rule[1] = second;
  if (result < 0) throw refusal("rule");
  rule.order = 0;
  return rule;
}

std::vector<PlacedRule> missingIn(const FilterTable& table, const std::vector<PlacedRule>& placed) {
  Stock stock;
  for (size_t i = 0; i < inFrontOfDefault(table); ++i) stock.add(table.rule[i]);
  std::vector<PlacedRule> missing;
  for (const PlacedRule& one : placed) {
    if (!stock.take(one.rule)) missing.push_back(one);
  }
  return missing;
}

bool standAsPlaced(const FilterTable& table, const std::vector<PlacedRule>& placed) {
  std::vector<const FilterRule*> rules(inFrontOfDefault(table));
  for (size_t i = 0; i < rules.size(); ++i) rules[i] = &table.rule[i];
  for (auto one = placed.rbegin(); one != placed.rend(); ++one) {
    const size_t last = rules.empty() ? 0 : rules.size() - 1;
    const size_t at = one->position == kLastPlace ? last : static_cast<size_t>(one->position);
    if (at >= rules.size() || !same(*rules[at], one->rule)) return false;
    rules.erase(rules.begin() + static_cast<std::ptrdiff_t>(at));
  }
  return true;
}

void takeOut(const std::vector<PlacedRule>& placed) {
  Stock stock;
  for (const PlacedRule& one : placed) stock.add(one.rule);
  FilterTable& table = shm->filterTable;
  FilterRule* last = table.rule + inFrontOfDefault(table);
  FilterRule* end = std::remove_if(table.rule, last, [&stock](const FilterRule& rule) { return stock.take(rule); });
  *end = *last;
  table.ruleCount = static_cast<int32_t>(end - table.rule) + 1;
}

void insertPlaced(const PlacedRule& placed) {
  FilterRule rule = placed.rule;
  const int count = shm->filterTable.ruleCount;
  const int position = placed.position == kLastPlace ? std::max(0, count - 1) : placed.position;
  if (insertRule(position, &rule) == 0) return;
  if (shm_errno != SHM_EINVAL) throw refusal("rule");
  throw Refusal(kRefused,
                "the table has " + std::to_string(count - 1) +
                    " rules in front of the default rule: no place for rule " + std::to_string(position + 1),
                SHM_EINVAL);
}

}  // namespace ctl
