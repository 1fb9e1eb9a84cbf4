// SPDX-License-Identifier: Apache-2.0
// The rules: what is not common to both tables is changed, deleted and inserted; what is stays untouched.
#include <algorithm>

#include "kestrove/kestrove.h"
#include "tools/ctl/settings/carrying.h"
#include "tools/ctl/settings/sequence.h"

namespace ctl {
namespace {

std::vector<std::string> textsOf(const FilterTable& table) {
  std::vector<std::string> texts;
  const int32_t count = std::clamp<int32_t>(table.ruleCount, 1, SHM_RULES);
  for (int32_t i = 0; i + 1 < count; ++i) texts.push_back(ruleLine(table.rule[i]));
  return texts;
}

class Rules {
 public:
  explicit Rules(Carrying& carrying)
      : carrying_(carrying), before_(textsOf(shm->filterTable)), target_(textsOf(carrying.target.filterTable)) {
    gaps_ = gapsBetween({before_.begin(), before_.end()}, {target_.begin(), target_.end()});
  }

  // From the back, so that the places in front stay what they are: full tables have room before anything is inserted.
  void change() {
    for (auto gap = gaps_.rbegin(); gap != gaps_.rend(); ++gap) {
      for (size_t i = gap->removed; i > pairs(*gap); --i) remove(gap->before + i - 1);
      for (size_t i = 0; i < pairs(*gap); ++i) replace(gap->before + i, gap->after + i);
    }
    for (const Gap& gap : gaps_) {
      for (size_t i = pairs(gap); i < gap.added; ++i) insert(gap.after + i);
    }
  }

 private:
  static size_t pairs(const Gap& gap) { return std::min(gap.removed, gap.added); }

  void attempt(size_t place, std::optional<std::string> before, std::optional<std::string> after,
               const std::function<int()>& make) {
    const bool made = carrying_.attempt({"rules", std::to_string(place), std::move(before), std::move(after)}, make);
    if (made) carrying_.marks |= SHM_CHANGE_RULES;
  }

  void remove(size_t place) {
    attempt(place, before_[place], {}, [place] { return deleteRule(static_cast<int>(place)); });
  }

  void replace(size_t place, size_t wanted) {
    FilterRule rule = carrying_.target.filterTable.rule[wanted];
    rule.order = 0;
    attempt(place, before_[place], target_[wanted], [&] { return changeRule(static_cast<int>(place), &rule); });
  }

  // Behind a rule that failed the places are no longer those of the target.
  void insert(size_t wanted) {
    FilterRule rule = carrying_.target.filterTable.rule[wanted];
    const int last = std::max(0, shm->filterTable.ruleCount - 1);
    const int place = std::min(static_cast<int>(wanted), last);
    attempt(wanted, {}, target_[wanted], [&] { return addRule(place, &rule, 0, 0); });
  }

  Carrying& carrying_;
  std::vector<std::string> before_, target_;
  std::vector<Gap> gaps_;
};

}  // namespace

void changeRules(Carrying& carrying) {
  if (!carrying.changesOf("rules").empty()) Rules(carrying).change();
}

}  // namespace ctl
