// SPDX-License-Identifier: Apache-2.0
// Shapes of JSON: what they take, what they refuse, and the names of their fields.
#include "tools/ctl/shape.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace ctl {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::string held(const char* shape, const char* value) { return mismatch(parseShape(shape), Json::parse(value)); }

TEST(Shape, TakesWhatItSays) {
  struct Row {
    const char* shape;
    const char* value;
  };
  for (const Row& row : {Row{"text", "\"a\""},
                         {"number", "-1.5"},
                         {"bool", "true"},
                         {"null", "null"},
                         {"any", "[1]"},
                         {"time", "\"2026-11-21T22:17:46Z\""},
                         {"time", "null"},
                         {"text|null", "null"},
                         {"\"on\"|\"off\"", "\"off\""},
                         {"[number]", "[]"},
                         {"[number]", "[1, 2]"},
                         {"{a, b: number (a remark), c?}", "{\"b\": 1, \"a\": \"x\"}"},
                         {"{*: number}", "{\"any one\": 1}"},
                         {"{\"two words\": text}", "{\"two words\": \"x\"}"},
                         {"{}", "{}"},
                         {"@done", "{\"done\": \"x\"}"},
                         {"change(@done)", "{\"done\": \"x\", \"saved\": false, \"reason\": \"y\"}"},
                         {"change([number])", "{\"result\": [1], \"saved\": false}"},
                         {"change([number])", "[1]"},
                         {"{@done, more: number}", "{\"done\": \"x\", \"more\": 1}"}}) {
    EXPECT_EQ("", held(row.shape, row.value)) << row.shape;
  }
}

TEST(Shape, SaysWhereAValueIsNotAsItShouldBe) {
  struct Row {
    const char* shape;
    const char* value;
    const char* said;
  };
  for (const Row& row : {Row{"text", "1", ": no text"},
                         {"number", "\"1\"", ": no number"},
                         {"bool", "0", ": no bool"},
                         {"time", "\"2026-11-21 22:17:46\"", ": no time"},
                         {"\"on\"", "\"off\"", ": not \"on\""},
                         {"[number]", "[1, null]", "[1]: no number"},
                         {"[number]", "{}", ": no list"},
                         {"{a}", "[]", ": no object"},
                         {"{a, b}", "{\"a\": \"x\"}", ".b: absent"},
                         {"{a}", "{\"a\": \"x\", \"b\": 1}", ".b: not in the shape"},
                         {"[{a: [text]}]", "[{\"a\": [1]}]", "[0].a[0]: no text"},
                         {"text|null", "1", ": no text, and: no null"},
                         {"@done", "{\"done\": \"x\", \"saved\": true}", ".saved: not in the shape"}}) {
    EXPECT_EQ(row.said, held(row.shape, row.value)) << row.shape;
  }
}

TEST(Shape, WhatIsNoShapeIsRefused) {
  for (const char* wrong :
       {"", "texts", "{a", "[text", "{a: }", "text text", "@nothing of this name", "\"on", "change(text"}) {
    EXPECT_THROW(mismatch(parseShape(wrong), Json()), std::runtime_error) << wrong;
  }
}

TEST(Shape, EveryNameStandsForAShape) {
  for (const NamedShape& one : namedShapes()) {
    EXPECT_NO_THROW(shapeNamed(one.name)) << one.name;
    EXPECT_STRNE("", one.help) << one.name;
  }
}

TEST(Fields, AreTheMembersOfARecord) {
  EXPECT_THAT(fieldsIn(parseShape("[{a, b: number}]")), ElementsAre("a", "b"));
  EXPECT_THAT(fieldsIn(parseShape("change({a, b?})")), ElementsAre("a", "b"));
  EXPECT_THAT(fieldsIn(parseShape("{findings: [{a}]}")), ElementsAre("a"));
  EXPECT_THAT(fieldsIn(parseShape("{one: [{a}], two}")), ElementsAre("one", "two"));
  EXPECT_THAT(fieldsIn(parseShape("{a}|[{b}]")), ElementsAre("a", "b"));
  EXPECT_THAT(fieldsIn(parseShape("[text]")), IsEmpty());
}

TEST(Fields, AreLookedAtBeforeAnythingIsDone) {
  Command row = group("toy", "Toys");
  row.json = "[{name, size: number}]";
  Session session;
  for (const char* good : {"", "name", "size,name", "name,name"}) {
    session.fields = good;
    EXPECT_NO_THROW(requireOutput(session, row)) << good;
  }
  session.fields = "name,colour";
  try {
    requireOutput(session, row);
    ADD_FAILURE();
  } catch (const Refusal& refusal) {
    EXPECT_EQ(kUsage, refusal.exit());
    EXPECT_STREQ("colour: no such field; there are name, size", refusal.what());
  }
  session.json = true;
  EXPECT_THROW(requireOutput(session, row), Refusal);
  session.fields = "";
  EXPECT_NO_THROW(requireOutput(session, row));
  session.terse = true;
  EXPECT_THROW(requireOutput(session, row), Refusal);
}

}  // namespace
}  // namespace ctl
