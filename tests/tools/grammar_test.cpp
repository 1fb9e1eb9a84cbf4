// SPDX-License-Identifier: Apache-2.0
// The table of kestrovectl's commands, and the parser that is made from it.
#include "tools/ctl/grammar.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

#include "tools/ctl/command_line.h"
#include "tools/ctl/reference.h"

namespace ctl {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

std::string wordsText(const Command& row) {
  std::string text;
  for (const std::string& word : row.words) text += (text.empty() ? "" : " ") + word;
  return text;
}

TEST(Grammar, EveryCommandStandsOnceBehindItsGroup) {
  std::set<std::string> known;
  for (const Command& row : grammar()) {
    const std::string text = wordsText(row);
    EXPECT_TRUE(known.insert(text).second || row.script) << text << ": a line of saved scripts may have other values";
    EXPECT_TRUE(row.words.size() == 1 || known.contains(text.substr(0, text.rfind(' ')))) << text;
    EXPECT_EQ(row.hidden, std::string(row.help).empty()) << text;
  }
  EXPECT_TRUE(known.contains("route6 replace"));
}

TEST(Grammar, AGroupHasCommandsBelowIt) {
  for (const Command& row : grammar()) {
    if (row.run) continue;
    EXPECT_THAT(row.values, IsEmpty()) << wordsText(row);
    EXPECT_TRUE(std::any_of(grammar().begin(), grammar().end(), [&row](const Command& other) {
      return other.words.size() > row.words.size() && other.words.front() == row.words.front();
    })) << wordsText(row);
  }
}

// Otherwise a word could be meant for either.
TEST(Grammar, WhatMayBeAbsentStandsBehindWhatMayNot) {
  for (const Command& row : grammar()) {
    bool absent = false;
    bool several = false;
    for (const Value& value : row.values) {
      if (value.isOption()) continue;
      EXPECT_FALSE(several || (absent && value.needed)) << wordsText(row) << " " << value.name;
      absent = absent || !value.needed;
      several = value.several;
    }
  }
}

TEST(Grammar, NoNameStandsTwiceOnALine) {
  for (const Command& row : grammar()) {
    std::set<std::string> names;
    for (const Argument<Session>& shared : sharedOptions()) names.insert(shared.name);
    for (const Value& value : row.values) {
      EXPECT_TRUE(names.insert(value.name).second) << wordsText(row) << " " << value.name;
      EXPECT_EQ(row.hidden, std::string(value.help).empty()) << wordsText(row) << " " << value.name;
    }
  }
}

TEST(Grammar, EveryTypeSaysWhatItTakes) {
  for (const Command& row : grammar()) {
    for (const Value& value : row.values) {
      const Type& type = value.type;
      EXPECT_EQ(type.form == Form::kFlag, typeText(type).empty()) << wordsText(row) << " " << value.name;
      EXPECT_EQ(type.completion == Completion::kWords || type.form == Form::kName, !type.words.empty())
          << wordsText(row) << " " << value.name;
      EXPECT_LE(type.least, type.most) << wordsText(row) << " " << value.name;
    }
  }
}

TEST(Grammar, TypesReadAsTheyAreTyped) {
  EXPECT_EQ("on|off", typeText(takes::onOrOff()));
  EXPECT_EQ("0..65535", typeText(takes::number(0, 65535)));
  EXPECT_EQ("0..9 kbit/s", typeText(takes::number(0, 9).in("kbit/s")));
  EXPECT_EQ("NUMBER", typeText(takes::number()));
  EXPECT_EQ("ADDRESS[/LENGTH]", typeText(takes::prefix(Family::kIpv6)));
}

// A command of its own, whose handler notes what it gets.
struct Toy {
  std::string name;
  uint32_t position = SHM_OFF;
  std::optional<Prefix> end = {};
  double seconds = 1.5;
  bool quick = false;
  std::vector<std::string> rest = {};
};

std::vector<Toy> seen;

void note(const Session&, const Toy& line) { seen.push_back(line); }

void noteNothing(const Session&) { seen.push_back({.name = "nothing"}); }

const std::vector<Command>& toys() {
  static const std::vector<Command> rows = {
      group("toy", "Toys"),
      command("toy make", "Make one", note,
              {needed("NAME", &Toy::name, takes::text(), "Its name"),
               option("SWITCH", &Toy::position, takes::onOrOff(), "Its switch"),
               option("--end", &Toy::end, takes::prefix(Family::kBoth), "Its end"),
               option("--seconds", &Toy::seconds, takes::seconds(0, 5), "Its time"),
               flag("--quick", &Toy::quick, "Quickly")}),
      command("toy show", "Show some", note, {several("NAME", &Toy::rest, takes::text(), "Their names")}),
      command("box", "All boxes", noteNothing), command("box open", "Open one", noteNothing)};
  return rows;
}

void parse(const std::string& line) {
  CLI::App app("", "toys");
  const Session session;
  app.require_subcommand(0, 1);
  seen.clear();
  addCommands(app, session, toys());
  app.parse(line);
}

TEST(CommandLine, AHandlerGetsParsedValues) {
  parse("toy make bear on --end 10.1.2.3/16 --seconds 0.25 --quick");
  ASSERT_EQ(1u, seen.size());
  EXPECT_EQ("bear", seen[0].name);
  EXPECT_EQ(uint32_t{SHM_ON}, seen[0].position);
  ASSERT_TRUE(seen[0].end);
  EXPECT_EQ(0x0000FFFFu, seen[0].end->mask);
  EXPECT_EQ(0.25, seen[0].seconds);
  EXPECT_TRUE(seen[0].quick);
}

TEST(CommandLine, SeveralWordsComeInTheirOrder) {
  parse("toy show bear doll bear");
  ASSERT_EQ(1u, seen.size());
  EXPECT_THAT(seen[0].rest, ElementsAre("bear", "doll", "bear"));
  parse("toy show");
  EXPECT_THAT(seen[0].rest, IsEmpty());
}

TEST(CommandLine, NothingIsLeftOfTheLineBefore) {
  parse("toy make bear on --end 10.1.2.3/16 --seconds 0.25 --quick");
  parse("toy make doll");
  ASSERT_EQ(1u, seen.size());
  EXPECT_EQ("doll", seen[0].name);
  EXPECT_EQ(uint32_t{SHM_OFF}, seen[0].position);
  EXPECT_FALSE(seen[0].end);
  EXPECT_EQ(1.5, seen[0].seconds);
  EXPECT_FALSE(seen[0].quick);
}

TEST(CommandLine, WhatTheTypeDoesNotTakeNeverReachesTheHandler) {
  for (const char* line : {"toy make", "toy make bear maybe", "toy make bear --seconds 6", "toy make bear --seconds x",
                           "toy make bear on on", "toy make bear --end", "toy", "box shut"}) {
    EXPECT_THROW(parse(line), CLI::ParseError) << line;
    EXPECT_THAT(seen, IsEmpty()) << line;
  }
  EXPECT_THROW(parse("toy make bear --end 10.1.2.3/33"), Refusal);
  EXPECT_THAT(seen, IsEmpty());
}

TEST(CommandLine, AGroupMayDoSomethingByItself) {
  parse("box");
  EXPECT_EQ(1u, seen.size());
  parse("box open");
  EXPECT_EQ(1u, seen.size()) << "only what was asked for";
}

TEST(Reference, NamesWordsValuesAndPresets) {
  EXPECT_EQ("toy make NAME [SWITCH] [OPTION...]", syntaxOf(toys()[1]));
  EXPECT_EQ("toy show [NAME...]", syntaxOf(toys()[2]));
  const std::string text = reference(toys());
  EXPECT_THAT(text, HasSubstr("### toy\n\nToys.\n\n| Command | What it does |\n|---|---|\n"
                              "| `toy make NAME [SWITCH] [OPTION...]` | Make one |\n"));
  EXPECT_THAT(text, HasSubstr("| `SWITCH` | `on\\|off` | Its switch; `off` when absent | `make` |\n"));
  EXPECT_THAT(text, HasSubstr("| `--seconds` | `0..5 seconds` | Its time; `1.5` when absent | `make` |\n"));
  EXPECT_THAT(text, HasSubstr("| `--quick` | nothing | Quickly | `make` |\n"));
  EXPECT_THAT(reference(grammar()), Not(HasSubstr("explain-inside")));
}

TEST(Prefixes, AreReadInOnePlace) {
  EXPECT_EQ(0x0000FFFFu, parsePrefix("10.1.2.3/16", Family::kBoth).mask);
  EXPECT_EQ(0x0000FFFFu, parsePrefix("10.1.2.3/255.255.0.0", Family::kIpv4).mask);
  EXPECT_EQ(0xFFFFFFFFu, parsePrefix("10.1.2.3", Family::kIpv4).mask);
  EXPECT_EQ(0u, parsePrefix("0.0.0.0/0", Family::kIpv4).mask);
  EXPECT_EQ(0x0302010Au, parsePrefix("10.1.2.3/16", Family::kBoth).host.address) << "as it was given";
  EXPECT_EQ("10.1.2.3", parsePrefix("10.1.2.3/16", Family::kBoth).host.text);
  EXPECT_EQ(32u, parsePrefix("fd00::1/32", Family::kBoth).length6);
  EXPECT_EQ(128u, parsePrefix("fd00::1", Family::kBoth).length6);
  EXPECT_EQ(6u, parsePrefix("fd00::1", Family::kBoth).version());
}

TEST(Prefixes, ThatMakeNoSenseAreUsageErrors) {
  struct Row {
    const char* text;
    Family family;
  };
  for (const Row& row : {Row{"", Family::kBoth},
                         {"10.1.2", Family::kBoth},
                         {"10.1.2.3/", Family::kBoth},
                         {"10.1.2.3/33", Family::kBoth},
                         {"10.1.2.3/-1", Family::kBoth},
                         {"10.1.2.3/16/16", Family::kBoth},
                         {"fd00::/", Family::kBoth},
                         {"fd00::/129", Family::kBoth},
                         {"fd00::/1x", Family::kBoth},
                         {"fd00::/8", Family::kIpv4},
                         {"10.0.0.0/8", Family::kIpv6}}) {
    try {
      parsePrefix(row.text, row.family);
      ADD_FAILURE() << row.text;
    } catch (const Refusal& refusal) {
      EXPECT_EQ(kUsage, refusal.exit()) << row.text;
    }
  }
}

TEST(Vocabulary, EveryWordBothWays) {
  for (Vocabulary words : {Vocabulary(kSwitches), Vocabulary(kProtocols), Vocabulary(kTargets), Vocabulary(kRuleStatus),
                           Vocabulary(kRouteStatus), Vocabulary(kInterfaceKinds), Vocabulary(kPorts)}) {
    for (const NamedNumber& word : words) {
      EXPECT_EQ(word.number, findName(words, word.name)->number);
      EXPECT_EQ(word.name, nameOf(words, static_cast<uint32_t>(word.number)));
    }
    EXPECT_EQ("77", nameOf(words, 77));
    EXPECT_EQ(nullptr, findName(words, "ON"));
  }
  EXPECT_STREQ("unset", switchText(0));
  EXPECT_STREQ("invalid", switchText(3));
}

TEST(Words, ANameMayBeANumberUpToItsLimit) {
  const Type type = takes::name(kProtocols, 255, "any|tcp|udp|0..255", "protocol (any, tcp, udp or 0 to 255)");
  EXPECT_EQ(6, parseWord(type, "tcp"));
  EXPECT_EQ(255, parseWord(type, "255"));
  for (const char* wrong : {"256", "", "-1", "TCP", "1000"}) EXPECT_THROW(parseWord(type, wrong), Refusal) << wrong;
}

}  // namespace
}  // namespace ctl
