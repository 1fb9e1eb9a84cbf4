// SPDX-License-Identifier: Apache-2.0
// The rules: what is not common to both tables is changed, deleted and inserted; what is stays untouched.
#include <algorithm>

#include "kestrove/kestrove.h"
#include "tools/ctl/settings/carrying.h"

namespace ctl {
namespace {

size_t pairs(const Gap& gap) { return std::min(gap.removed, gap.added); }

class Rules {
 public:
  explicit Rules(Carrying& carrying) : carrying_(carrying), changes_(carrying.changesOf("rules")) {}

  // From the back, so that the places in front stay what they are.
  void removeAndChange() {
    size_t change = changes_.size();
    for (auto gap = carrying_.gaps.rbegin(); gap != carrying_.gaps.rend(); ++gap) {
      change -= std::max(gap->removed, gap->added);
      for (size_t i = gap->removed; i > pairs(*gap); --i) remove(*changes_[change + i - 1], gap->before + i - 1);
      for (size_t i = 0; i < pairs(*gap); ++i) replace(*changes_[change + i], gap->before + i, gap->after + i);
    }
  }

  // From the front: what stands there is what is wanted.
  void insertAll() {
    size_t change = 0;
    for (const Gap& gap : carrying_.gaps) {
      for (size_t i = pairs(gap); i < gap.added; ++i) insert(*changes_[change + i], gap.after + i);
      change += std::max(gap.removed, gap.added);
    }
  }

 private:
  void attempt(const SettingChange& change, const std::function<int()>& make) {
    if (carrying_.attempt(change, make)) carrying_.marks |= SHM_CHANGE_RULES;
  }

  void remove(const SettingChange& change, size_t place) {
    attempt(change, [place] { return deleteRule(static_cast<int>(place)); });
  }

  void replace(const SettingChange& change, size_t place, size_t wanted) {
    FilterRule rule = carrying_.target.filterTable.rule[wanted];
    rule.order = 0;
    attempt(change, [&rule, place] { return changeRule(static_cast<int>(place), &rule); });
  }

  // Behind a rule that failed the places are no longer those of the target.
  void insert(const SettingChange& change, size_t wanted) {
    FilterRule rule = carrying_.target.filterTable.rule[wanted];
    const int last = std::max(0, shm->filterTable.ruleCount - 1);
    const int place = std::min(static_cast<int>(wanted), last);
    attempt(change, [&rule, place] { return addRule(place, &rule, 0, 0); });
  }

  Carrying& carrying_;
  std::vector<const SettingChange*> changes_;
};

}  // namespace

void removeRules(Carrying& carrying) {
  carrying.gaps = ruleGaps(shm->filterTable, carrying.target.filterTable);
  Rules(carrying).removeAndChange();
}

void addRules(Carrying& carrying) {
  if (!carrying.gaps.empty()) Rules(carrying).insertAll();
}

}  // namespace ctl
