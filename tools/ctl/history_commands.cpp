// SPDX-License-Identifier: Apache-2.0
// history, rollback.
#include <algorithm>

#include "kestrove/segment.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/history/carry_recorded.h"
#include "tools/ctl/settings/difference.h"

namespace ctl {
namespace {

struct HistoryLine {
  int newest = kRevisionsKept;
};

struct RevisionLine {
  int number = 0;
};

std::vector<Revision> kept() {
  const std::optional<Home> home = Home::find();
  if (!home) return {};
  return Revisions(*home).all([](const std::string& path) { warn(path + ": damaged, skipped"); });
}

void list(const Session& session, const HistoryLine& line) {
  std::vector<Revision> revisions = kept();
  std::reverse(revisions.begin(), revisions.end());
  revisions.resize(std::min(revisions.size(), static_cast<size_t>(line.newest)));
  Json rows = Json::array();
  for (const Revision& revision : revisions) rows.push_back(revisionJson(revision));
  session.show(session.json || !rows.empty() ? rows : Json("no revisions"));
}

Revision headOf(int number) {
  const std::optional<Home> home = Home::find();
  return home ? Revisions(*home).find(number) : Revision{};
}

// Against the newest revision in front of it that can be read.
Difference changesOf(int number) {
  int before = 0;
  for (const Revision& revision : kept()) {
    if (revision.number < number) before = std::max(before, revision.number);
  }
  return compare(before > 0 ? revisionLines(before) : std::vector<SettingLine>{}, revisionLines(number));
}

void showOne(const Session& session, const RevisionLine& line) {
  const std::vector<SettingLine> lines = revisionLines(line.number);  // throws where there is none
  Json result = revisionJson(headOf(line.number));
  const Difference difference = changesOf(line.number);
  if (!session.json) {
    session.show(result);
    return session.print(differenceText(difference, false));
  }
  const Json changes = differenceJson(difference);
  for (const auto& [name, value] : changes.items()) result[name] = value;
  Json settings = Json::array();
  for (const SettingLine& setting : lines) settings.push_back(setting.text);
  result["settings"] = settings;
  session.show(result);
}

// Nobody's password is in a revision.
void tellPasswords(const Outcome& outcome) {
  for (const SettingChange& change : outcome.made.changes) {
    if (change.section != "users" || change.before || !change.after) continue;
    warn("user " + change.key + " is back without a password: give it one");
  }
}

void rollback(const Session& session, const RevisionLine& line) {
  requireStore(session);
  const std::vector<SettingLine> lines = revisionLines(line.number);
  const CarriedOut done = carryOutRecorded(
      session, [&lines] { return imageFromLines(lines, *shm); }, CarryOptions{});
  tellPasswords(done.outcome);
  const std::string title = done.outcome.changed ? "settings of revision " + std::to_string(line.number) + " are back"
                                                 : "nothing differs from revision " + std::to_string(line.number);
  showCarriedOut(session, done, title);
}

}  // namespace

std::vector<Command> historyCommands() {
  const auto number = needed("REVISION", &RevisionLine::number, takes::number(1, 999999999), "Its number");
  return {command("history", "The changes made through kestrovectl, newest first", list,
                  {option("NUMBER", &HistoryLine::newest, takes::number(1, kRevisionsKept), "How many")}),
          command("history show", "What a revision changed", showOne, {number}),
          changing("rollback", "Bring the settings of a revision back, changing only what differs", rollback, {number},
                   "Passwords are in no revision: a user that comes back has none until it is given one.")};
}

}  // namespace ctl
