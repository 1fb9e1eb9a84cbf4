// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/history/changing.h"

#include <algorithm>
#include <iterator>

#include "tools/ctl/history/recording.h"

namespace ctl {
namespace {

// What these change is no setting: no revision has it.
constexpr const char* kWithoutRevision[] = {"clock set",
                                            "configuration-mode enter",
                                            "configuration-mode leave",
                                            "confirm",
                                            "confirm-watch",
                                            "debug-mode enter",
                                            "debug-mode leave",
                                            "dhcp",
                                            "events clear",
                                            "notifications set",
                                            "poweroff",
                                            "reboot",
                                            "route freshen",
                                            "route6 freshen",
                                            "save",
                                            "state save",
                                            "stats reset"};

// What a revision has and nothing brings back: passwords, files, a whole store.
constexpr const char* kForGood[] = {"factory-reset", "state load", "user passwd"};

std::string textOf(const Command& row) {
  std::string text;
  for (const std::string& word : row.words) text += (text.empty() ? "" : " ") + word;
  return text;
}

template <size_t N>
bool isOneOf(const char* const (&names)[N], const Command& row) {
  return std::find(std::begin(names), std::end(names), textOf(row)) != std::end(names);
}

}  // namespace

bool keepsRevision(const Command& row) { return row.changes && !isOneOf(kWithoutRevision, row); }

bool canBeTakenBack(const Command& row) { return keepsRevision(row) && !isOneOf(kForGood, row); }

void refuseKeeping(const Session& session, const Command& row) {
  const bool confirm = session.confirmMinutes >= 0;
  if (!confirm && session.comment.empty()) return;
  if (!row.changes) {
    const std::string option = confirm ? "--confirm" : "--comment";
    throw Refusal(kUsage, option + " goes with a command that changes something, not with " + textOf(row));
  }
  if (confirm && !session.toBeConfirmed()) throw Refusal(kUsage, "--confirm takes a time above 0 minutes");
  if (confirm && !canBeTakenBack(row)) {
    throw Refusal(kUsage, textOf(row) + " cannot be taken back: it takes no --confirm");
  }
  if (!keepsRevision(row)) throw Refusal(kUsage, textOf(row) + " leaves no revision: it takes no --comment");
}

void tellUnkept(const Session& session) {
  if (Recording::any() || (session.comment.empty() && !session.toBeConfirmed())) return;
  warn(std::string("nothing was changed: there is nothing for ") +
       (session.toBeConfirmed() ? "--confirm" : "--comment"));
}

}  // namespace ctl
