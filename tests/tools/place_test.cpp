// SPDX-License-Identifier: Apache-2.0
// What may come next on a line of kestrovectl.
#include "tools/ctl/place.h"

#include <gmock/gmock.h>

namespace ctl {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

Place behind(const std::string& line) { return placeBehind(grammar(), wordsOf(line)); }

std::vector<std::string> below(const std::string& line) {
  std::vector<std::string> words;
  for (const Command* row : behind(line).below) words.push_back(row->words.back());
  return words;
}

std::vector<std::string> options(const std::string& line) {
  std::vector<std::string> names;
  for (const Value* option : behind(line).options) names.push_back(option->name);
  return names;
}

// The name of the value that comes next, or an empty text.
std::string next(const std::string& line) {
  const Value* value = behind(line).next;
  return value ? value->name : "";
}

Completion source(const std::string& line) {
  const Value* value = behind(line).next;
  return value ? value->type.completion : Completion::kNothing;
}

TEST(Place, WordsLeadToCommands) {
  EXPECT_THAT(below(""), AllOf(Contains("rule"), Contains("explain"), Not(Contains("add"))));
  EXPECT_THAT(below(""), Not(Contains("explain-inside"))) << "for the program's own use";
  EXPECT_THAT(below("rule"), ElementsAre("list", "add", "change", "move", "delete"));
  EXPECT_THAT(below("stats"), ElementsAre("reset"));
  EXPECT_THAT(below("--json --wait 5 mode"), ElementsAre("show", "single", "double", "unset", "other", "pbr"));
  EXPECT_THAT(below("rule add"), IsEmpty());
  EXPECT_THAT(below("rule add 0"), IsEmpty());
  EXPECT_STREQ("Insert a rule in front of a position", behind("rule add 0").row->help);
}

TEST(Place, ValuesComeInTheirOrder) {
  EXPECT_EQ("", next(""));
  EXPECT_EQ("", next("rule"));
  EXPECT_EQ("POSITION", next("rule add"));
  EXPECT_EQ("", next("rule add 0"));
  EXPECT_EQ("DESTINATION", next("route replace"));
  EXPECT_EQ("NEW", next("route replace 10.0.0.0/8"));
  EXPECT_EQ("GATEWAY", next("route replace --disabled 10.0.0.0/8 11.0.0.0/8"));
  EXPECT_EQ("ITEM", next("show minRate minMtu"));
  EXPECT_EQ("SWITCH", next("mode pbr"));
}

TEST(Place, AnOptionTakesTheNextWord) {
  EXPECT_EQ("--kbps", next("rule add 0 --kbps"));
  EXPECT_EQ("", next("rule add 0 --kbps 512"));
  EXPECT_EQ("POSITION", next("rule add --kbps=512"));
  EXPECT_EQ("POSITION", next("rule add --any"));
  EXPECT_EQ("--source", next("--source"));
  EXPECT_THAT(options("rule add 0 --kbps"), IsEmpty());
  EXPECT_THAT(options("rule add 0"), AllOf(Contains("--kbps"), Contains("--match-all"), Contains("--json")));
  EXPECT_THAT(options("rule add 0 --kbps 512 --any"), AllOf(Not(Contains("--kbps")), Not(Contains("--any"))));
  EXPECT_THAT(options("rule change 0"), Not(Contains("--match-all")));
  EXPECT_THAT(options(""), ElementsAre("--json", "--terse", "--fields", "--wide", "--source", "--user", "--wait",
                                       "--comment", "--confirm"));
}

TEST(Place, EachValueSaysWhatCompletesIt) {
  EXPECT_EQ(Completion::kRules, source("rule delete"));
  EXPECT_EQ(Completion::kWords, source("rule add 0 --target"));
  EXPECT_EQ(Completion::kNothing, source("route add"));
  EXPECT_EQ(Completion::kRoutes, source("route remove"));
  EXPECT_EQ(Completion::kRoutes6, source("route6 remove"));
  EXPECT_EQ(Completion::kAddresses, source("address remove"));
  EXPECT_EQ(Completion::kUsers, source("user passwd"));
  EXPECT_EQ(Completion::kNothing, source("user add")) << "a new name";
  EXPECT_EQ(Completion::kItems, source("set"));
  EXPECT_EQ(Completion::kItemValues, source("set minRate"));
  EXPECT_EQ(Completion::kFiles, source("load"));
  EXPECT_EQ(Completion::kInterfaces, source("dhcp"));
  EXPECT_EQ(Completion::kWords, source("dump"));
}

TEST(Place, BehindExplainALineBeginsAnew) {
  EXPECT_EQ(Completion::kCommands, source("explain"));
  EXPECT_THAT(below("explain rule"), Contains("move"));
  EXPECT_EQ("GATEWAY", next("--json explain route add 10.0.0.0/8"));
}

TEST(Place, WhatNoRowTakesLeadsNowhere) {
  for (const char* line : {"frobnicate", "rule frobnicate", "status now", "rule add 0 0"}) {
    EXPECT_THAT(below(line), IsEmpty()) << line;
    EXPECT_EQ("", next(line)) << line;
  }
}

}  // namespace
}  // namespace ctl
