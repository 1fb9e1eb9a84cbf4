// SPDX-License-Identifier: Apache-2.0
// Results as people and scripts read them: widths of characters, tables that fit, records, terse lines.
#include "tools/ctl/render.h"

#include <gmock/gmock.h>

#include <sstream>

#include "tools/ctl/output/fields.h"
#include "tools/ctl/output/terse.h"
#include "tools/ctl/output/width.h"

namespace ctl {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kWide[] = "\u6771\u4eac";          // two characters, four columns
constexpr char kCombining[] = "Zu\u0308rich";     // the dots go onto the u
constexpr char kEmoji[] = "\U0001F680";           // two columns
constexpr char kZeroWidth[] = "a\u200bb\u200dc";  // three columns

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

size_t widest(const std::string& text) {
  size_t most = 0;
  for (const std::string& line : linesOf(text)) most = std::max(most, displayWidth(line));
  return most;
}

TEST(DisplayWidth, IsWhatATerminalNeeds) {
  EXPECT_EQ(0u, displayWidth(""));
  EXPECT_EQ(5u, displayWidth("plain"));
  EXPECT_EQ(6u, displayWidth("Z\u00fcrich"));
  EXPECT_EQ(4u, displayWidth(kWide));
  EXPECT_EQ(6u, displayWidth(kCombining));
  EXPECT_EQ(2u, displayWidth(kEmoji));
  EXPECT_EQ(3u, displayWidth(kZeroWidth));
  EXPECT_EQ(2u, displayWidth("\uff21")) << "a letter of full width";
  EXPECT_EQ(1u, displayWidth("\uff71")) << "a kana of half width";
  EXPECT_EQ(2u, displayWidth("\ud55c")) << "a whole syllable of Korean";
  EXPECT_EQ(2u, displayWidth("\u1112\u1161\u11ab")) << "the same of three parts";
}

TEST(Shortened, NeverIsWiderAndNeverCutsACharacter) {
  struct Row {
    const char* text;
    size_t columns;
    const char* cut;
  };
  for (const Row& row : {Row{"plain", 5, "plain"},
                         {"plain", 4, "pla~"},
                         {"plain", 1, "~"},
                         {"plain", 0, ""},
                         {"\u6771\u4eac\u90fd", 6, "\u6771\u4eac\u90fd"},
                         {"\u6771\u4eac\u90fd", 5, "\u6771\u4eac~"},
                         {"\u6771\u4eac\u90fd", 4, "\u6771~"},
                         {"\u6771\u4eac\u90fd", 2, "~"},
                         {"Zu\u0308rich", 3, "Zu\u0308~"},
                         {"Zu\u0308rich", 2, "Z~"}}) {
    const std::string cut = shortened(row.text, row.columns, "~");
    EXPECT_EQ(row.cut, cut) << row.text << " " << row.columns;
    EXPECT_LE(displayWidth(cut), row.columns);
  }
  EXPECT_EQ("\u6771 ", padded("\u6771", 3));
}

Json cities() {
  return Json::array({{{"city", kWide}, {"note", "a capital with a long remark behind it"}, {"people", 14000000}},
                      {{"city", kCombining}, {"note", "a\nb\x1b[2Jc\x7f\xff"}, {"people", 440000}},
                      {{"city", kEmoji}, {"note", nullptr}, {"people", 3}}});
}

TEST(Table, AlignsByWidth) {
  EXPECT_THAT(linesOf(render(cities())), ElementsAre("city    note                                    people",
                                                     "\u6771\u4eac    a capital with a long remark behind it  14000000",
                                                     "Zu\u0308rich  a\\x0ab\\x1b[2Jc\\x7f\\xff                  440000",
                                                     "\U0001F680      -                                       3"));
}

TEST(Table, FitsOrBecomesRecords) {
  const std::string whole = render(cities());
  EXPECT_EQ(whole, render(cities(), 200));
  EXPECT_EQ(whole, render(cities(), 60));
  for (size_t columns = 60; columns <= 80; ++columns) EXPECT_LE(widest(render(cities(), columns)), columns);
  for (size_t columns : {size_t{20}, size_t{59}}) {
    EXPECT_THAT(render(cities(), columns), AllOf(HasSubstr("city    \u6771\u4eac\n"), HasSubstr("\n\ncity ")));
  }
}

Json wideRow() {
  return Json::array({{{"position", 0},
                       {"source", "192.168.100.0/24"},
                       {"destination", "any"},
                       {"anExtremelyLongHeading", "x"},
                       {"remark", "the quick brown fox jumps over it"}}});
}

TEST(Table, TheSecondBlankGoesFirstThenHeadingsThenTexts) {
  setenv("LC_ALL", "C", 1);  // 8 + 16 + 11 + 22 + 33 columns and 4 gaps
  EXPECT_EQ("position  source            destination  anExtremelyLongHeading  remark",
            linesOf(render(wideRow(), 98))[0]);
  EXPECT_EQ("position source           destination anExtremelyLongHeading remark", linesOf(render(wideRow(), 94))[0]);
  EXPECT_EQ("position source           destination anExtremely remark", linesOf(render(wideRow(), 83))[0]);
  EXPECT_EQ("posi source           dest anEx remark", linesOf(render(wideRow(), 65))[0]);
  EXPECT_EQ("0    192.168.100.0/24 any  x    the quick brown fox jumps over it", linesOf(render(wideRow(), 65))[1]);
  EXPECT_EQ("0    192.168.100.0/24 any  x    the quick brown fox jumps o~", linesOf(render(wideRow(), 60))[1]);
}

TEST(Table, NumbersAreNeverCut) {
  Json table = Json::array({Json::object()});
  for (int i = 0; i < 8; ++i) table[0]["n" + std::to_string(i)] = 1234567890;
  EXPECT_EQ("n0  1234567890", linesOf(render(table, 80))[0]) << "records: the numbers do not fit";
  EXPECT_EQ("n0         n1", linesOf(render(table, 87))[0].substr(0, 13));
}

TEST(Records, CutNothingAndBreakAtBlanks) {
  EXPECT_THAT(linesOf(render(Json::array({{{"name", "one two three four"}, {"x", 1}}}), 20)),
              ElementsAre("name  one two three", "      four", "x     1"));
  EXPECT_THAT(
      linesOf(render(Json::array({{{"destinationPorts", "80-90"}, {"x", "fd00:1234:5678:9abc:def0::1/128"}}}), 20)),
      ElementsAre("destinationPorts", "  80-90", "x", "  fd00:1234:5678:9abc:def0::1/128"));
}

TEST(Objects, KeepTheirFormWithoutATerminal) {
  const Json facts = {{"state", "on"}, {"list", {1, 2}}, {"none", Json::array()}, {"rows", {{{"a", true}, {"b", ""}}}}};
  EXPECT_EQ("state  on\nlist   1, 2\nnone   none\nrows:\n  a    b\n  yes\n", render(facts));
  EXPECT_EQ("every table is sound\n", render("every table is sound"));
  EXPECT_EQ("none\n", render(Json::array()));
}

TEST(Terse, IsARecordALine) {
  EXPECT_EQ(
      "\u6771\u4eac:a capital with a long remark behind it:14000000\n"
      "Zu\u0308rich:a\\x0ab\\x1b[2Jc\\x7f\\xff:440000\n"
      "\U0001F680::3\n",
      terseText(cities()));
}

TEST(Terse, GuardsWhatSeparates) {
  EXPECT_EQ("fd00\\:\\:1:a\\\\b:\\\\x0a:\\x0a\n",
            terseText({{"a", "fd00::1"}, {"b", "a\\b"}, {"c", "\\x0a"}, {"d", "\n"}}));
  EXPECT_EQ("yes:1,2::{\"k\"\\:1}\n",
            terseText({{"a", true}, {"list", {1, 2}}, {"none", Json::array()}, {"more", {{"k", 1}}}}));
  EXPECT_EQ(":x\n", terseText({{"a", ""}, {"b", "x"}})) << "an empty first value keeps its place";
  EXPECT_EQ("1:\n:2\n", terseText(Json::array({{{"a", 1}}, {{"b", 2}}})));
}

TEST(Terse, TakesTheRowsOfAnOnlyList) {
  EXPECT_EQ("x\ny\n", terseText({{"findings", {{{"t", "x"}}, {{"t", "y"}}}}}));
  EXPECT_EQ("", terseText({{"findings", Json::array()}}));
  EXPECT_EQ("", terseText(Json::array()));
}

TEST(FieldsOf, ChooseAndOrder) {
  EXPECT_THAT(fieldNames("a,b,,c"), ElementsAre("a", "b", "c"));
  EXPECT_EQ("14000000:\u6771\u4eac\n440000:Zu\u0308rich\n3:\U0001F680\n",
            terseText(fieldsOf(cities(), {"people", "city"})));
  EXPECT_EQ("people    city\n14000000  \u6771\u4eac\n",
            render(fieldsOf(Json::array({cities()[0]}), {"people", "city"})));
  EXPECT_EQ("b  2\na  1\n", render(fieldsOf({{"a", 1}, {"b", 2}, {"c", 3}}, {"b", "a"})));
  EXPECT_EQ("1:\n", terseText(fieldsOf(Json::array({{{"a", 1}}}), {"a", "notThere"})));
}

}  // namespace
}  // namespace ctl
