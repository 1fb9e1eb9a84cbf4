// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/history/changing.h"

#include <algorithm>
#include <iterator>

namespace ctl {
namespace {

// What these change does not come back, or is no setting.
constexpr const char* kForGood[] = {"clock set",     "configuration-mode enter",
                                    "confirm",       "configuration-mode leave",
                                    "dhcp",          "debug-mode enter",
                                    "events clear",  "debug-mode leave",
                                    "factory-reset", "notifications set",
                                    "poweroff",      "reboot",
                                    "route freshen", "route6 freshen",
                                    "save",          "state load",
                                    "state save",    "stats reset",
                                    "user passwd"};

std::string textOf(const Command& row) {
  std::string text;
  for (const std::string& word : row.words) text += (text.empty() ? "" : " ") + word;
  return text;
}

bool forGood(const Command& row) {
  return std::find(std::begin(kForGood), std::end(kForGood), textOf(row)) != std::end(kForGood);
}

}  // namespace

bool canBeTakenBack(const Command& row) { return row.changes && !forGood(row); }

void refuseKeeping(const Session& session, const Command& row) {
  const bool confirm = session.confirmMinutes >= 0;
  if (!confirm && session.comment.empty()) return;
  if (!row.changes) {
    const std::string option = confirm ? "--confirm" : "--comment";
    throw Refusal(kUsage, option + " goes with a command that changes something, not with " + textOf(row));
  }
  if (confirm && !session.toBeConfirmed()) throw Refusal(kUsage, "--confirm takes a time above 0 minutes");
  if (confirm && forGood(row)) {
    throw Refusal(kUsage, textOf(row) + " cannot be taken back: it takes no --confirm");
  }
}

}  // namespace ctl
