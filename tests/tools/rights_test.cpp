// SPDX-License-Identifier: Apache-2.0
// Which commands change something, and who may run them.
#include <gmock/gmock.h>

#include <set>

#include "tests/support/store.h"
#include "tools/ctl/change.h"
#include "tools/ctl/command_line.h"

namespace ctl {
namespace {

// By the last word of a command: each verb says of itself whether it changes something.
const std::set<std::string> kReading = {"check",  "completion", "bash",    "diff",     "dump",  "events", "explain",
                                        "follow", "help",       "history", "link",     "lint",  "list",   "lock",
                                        "lost",   "metrics",    "preview", "settings", "shell", "show",   "stats",
                                        "status", "support",    "rev",     "man"};
const std::set<std::string> kChanging = {
    "abort",   "add",    "apply",   "change", "clear",   "confirm",  "delete",   "dhcp",          "double", "enter",
    "freshen", "leave",  "load",    "move",   "passwd",  "pbr",      "poweroff", "factory-reset", "name",   "other",
    "reboot",  "remove", "replace", "reset",  "restart", "rollback", "save",     "set",           "single", "unset"};

std::string wordsText(const Command& row) {
  std::string text;
  for (const std::string& word : row.words) text += (text.empty() ? "" : " ") + word;
  return text;
}

TEST(Rights, AVerbChangesSomethingOrReadsWhereverItStands) {
  for (const Command& row : grammar()) {
    if (!row.run || row.hidden) continue;
    const std::string& verb = row.words.back();
    EXPECT_FALSE(row.changes && kReading.contains(verb)) << wordsText(row);
    EXPECT_FALSE(!row.changes && kChanging.contains(verb)) << wordsText(row);
  }
}

TEST(Rights, WhatAsksForAPasswordSaysSo) {
  std::set<std::string> asking;
  for (const Command& row : grammar()) {
    if (row.secret) asking.insert(wordsText(row));
  }
  EXPECT_THAT(asking, ::testing::IsSupersetOf({"user add", "user check", "user passwd"}));
}

class RightsTest : public kestrove::testing::StoreTest {};

struct Toy {
  std::string file = {};
  std::vector<std::string> words = {};
};

void touch(const Session& session) { Change change(session); }
void readFile(const Session&, const Toy&) {}
void runWithin(const Session&, const Toy&) {}

const std::vector<Command>& toys() {
  static const std::vector<Command> rows = {
      changing("paint", "Change one", touch), command("peek", "Look at one", touch),
      command("read", "Read one", readFile, {argument("FILE", &Toy::file, takes::file(), "Its file")}),
      command("within", "Look at a line", runWithin,
              {several("COMMAND", &Toy::words, takes::commandLine(), "The line")}),
      askingPassword(command("ask", "Ask for one", touch))};
  return rows;
}

// How the line ends: kDone, or the exit of its refusal.
Exit outcome(const std::string& line, const char* readsOnly = nullptr) {
  Session session;
  session.readsOnly = readsOnly;
  CLI::App app("", "toys");
  addCommands(app, session, toys());
  try {
    app.parse(line);
  } catch (const Refusal& refusal) {
    return refusal.exit();
  }
  return kDone;
}

TEST_F(RightsTest, ARowThatReadsOpensNoChange) {
  EXPECT_EQ(kDone, outcome("paint"));
  EXPECT_EQ(kSystem, outcome("peek"));
}

TEST_F(RightsTest, WhoMayOnlyReadRunsNothingElse) {
  EXPECT_EQ(kNotPermitted, outcome("paint", "only reading"));
  EXPECT_EQ(kNotPermitted, outcome("ask", "only reading")) << "an answer about a password is worth trying for";
  EXPECT_EQ(kNotPermitted, outcome("read /etc/passwd", "only reading"));
  EXPECT_EQ(kNotPermitted, outcome("within load /etc/passwd", "only reading"));
  EXPECT_EQ(kNotPermitted, outcome("within --json load /etc/passwd", "only reading"));
  EXPECT_EQ(kDone, outcome("within rule list", "only reading"));
  EXPECT_EQ(kDone, outcome("read", "only reading"));
  EXPECT_EQ(kDone, outcome("read /etc/passwd"));
}

}  // namespace
}  // namespace ctl
