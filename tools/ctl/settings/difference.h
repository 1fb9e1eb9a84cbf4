// SPDX-License-Identifier: Apache-2.0
// What makes two stores differ, setting by setting.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/ctl/settings/lines.h"
#include "tools/ctl/settings/sequence.h"

namespace ctl {

struct SettingChange {
  std::string section;
  std::string key;                    // of a rule: its number, in the second store where it is there
  std::optional<std::string> before;  // the lines; none where the setting is absent
  std::optional<std::string> after;
};

struct Difference {
  std::vector<SettingChange> changes;  // by section, in the order of their lines
  bool empty() const { return changes.empty(); }
};

// Rules are compared as a sequence: one that is inserted is one change, whatever stands behind it.
Difference compare(const ShmData& before, const ShmData& after);
// The rules of both, as keys that are equal where their lines are, and the gaps between them.
std::vector<Gap> ruleGaps(const FilterTable& before, const FilterTable& after);
Difference compare(const std::vector<SettingLine>& before, const std::vector<SettingLine>& after);

// Unified by section, "-" and "+" in front of the lines; empty when nothing differs.
std::string differenceText(const Difference& difference, bool colours);

// {"changed": bool, "diff": {"before": text, "after": text}, "changes": [{"section", "key", "before", "after"}]}, the
// texts with the lines that differ alone.
Json differenceJson(const Difference& difference);

}  // namespace ctl
