// SPDX-License-Identifier: Apache-2.0
// Two operators at one table, and values that are there already: cases from the table of requests.
#include <algorithm>

#include "tests/api/samples.h"
#include "tools/api/openapi.h"
#include "tools/api/tag.h"

namespace kestrove::testing {
namespace {

class TagsTest : public ApiTest {
 protected:
  void SetUp() override {
    ApiTest::SetUp();
    alice_ = browserOf("alice");
    shm->config.singleInterfaceMode = SHM_OFF;
    shm->config.pbrOperState = SHM_OFF;
    add("bertha", 2);
    ASSERT_EQ(200, ask("PUT", "/items/compression", {{"value", "off"}}).status);  // history has begun
  }
  api::Reply ask(const std::string& method, const std::string& path, const Json& body = nullptr) {
    return ApiTest::ask(alice_, method, path, body);
  }
  api::Reply askIf(const std::string& tag, const std::string& method, const std::string& path, const Json& body) {
    api::Request made = from(alice_, request(method, path, body));
    made.headers["if-match"] = tag;
    return api::answer(made);
  }
  // The value is there: that is said, and nothing else is done.
  void expectEqual(const std::string& method, const std::string& path, const Json& body) {
    const std::string before = everything();
    const api::Reply reply = ask(method, path, body);
    EXPECT_EQ(200, reply.status) << path << reply.body;
    EXPECT_EQ(false, jsonOf(reply)["changed"]) << path << reply.body;
    EXPECT_TRUE(before == everything()) << path;
  }

  Browser alice_;
};

// Where the tag of the table is read.
std::string readerOf(const api::Endpoint& change) {
  if (change.path == std::string("/items/{item}")) return samplePath(change);
  return std::ranges::find_if(api::endpoints(),
                              [&](const api::Endpoint& row) {
                                return row.reads() && !*row.pick && row.table == std::string(change.table);
                              })
      ->path;
}

// As doc/api.yaml has it.
void expectResult(const api::Endpoint& row, Json result) {
  EXPECT_TRUE(!result.is_object() || result["changed"].is_boolean()) << row.path << result;
  const auto shape = api::resultShape(row);
  ASSERT_TRUE(shape) << row.path;
  const bool said = ctl::mismatch(*shape, result).empty();
  if (!said && result.is_object()) result.erase("changed");  // beside what the command says
  EXPECT_EQ("", ctl::mismatch(*shape, result)) << row.path << result;
}

TEST_F(TagsTest, EveryTableIsChangedOnlyByWhoSawItAsItIs) {
  int tables = 0;
  for (const api::Endpoint& row : api::endpoints()) {
    if (row.reads() || !*row.table) continue;
    const std::string before = everything();
    const api::Reply late = askIf("\"00000000000000000000000000000000\"", row.method, samplePath(row), sampleBody(row));
    EXPECT_EQ(412, late.status) << row.method << row.path << late.body;
    EXPECT_FALSE(jsonOf(late)["error"]["message"].get<std::string>().empty()) << row.path;
    EXPECT_TRUE(before == everything()) << row.path;
    const api::Fields query =
        row.table == std::string("settings running") ? api::Fields{{"state", "running"}} : api::Fields{};
    const std::string tag = ApiTest::ask(alice_, "GET", readerOf(row), nullptr, query).header("ETag");
    ASSERT_EQ(34u, tag.size()) << row.path;
    const api::Reply known = askIf(tag, row.method, samplePath(row), sampleBody(row));
    EXPECT_NE(412, known.status) << row.method << row.path << known.body;
    EXPECT_NE(400, known.status) << row.method << row.path << known.body;
    if (known.status < 300) expectResult(row, jsonOf(known));
    ++tables;
  }
  EXPECT_GT(tables, 20);
}

TEST(TagTest, ListsOfTagsAreReadWhole) {
  const std::pair<const char*, const char*> kLists[] = {{R"("a")", R"("a")"},
                                                        {R"("a","b")", R"("a" "b")"},
                                                        {R"( "a" , W/"b" ,"c d")", ""},
                                                        {R"( "a" ,	W/"b" )", R"("a" weak"b")"},
                                                        {R"(,, "a",, "b" ,)", R"("a" "b")"},
                                                        {R"("a,b", "*")", R"("a,b" "*")"},
                                                        {R"("")", R"("")"},
                                                        {"\"\xc3\xa4\"", "\"\xc3\xa4\""},
                                                        {"*", "any"},
                                                        {" * ", "any"}};
  for (const auto& [header, wanted] : kLists) {
    const auto given = api::tagsIn(header);
    std::string found = given && given->any ? "any" : "";
    for (const api::GivenTag& one : given ? given->all : std::vector<api::GivenTag>()) {
      found += (found.empty() ? "" : " ") + std::string(one.weak ? "weak" : "") + one.text;
    }
    EXPECT_EQ(wanted, found) << header;
  }
  for (const char* rubbish : {"", " ", ",", "a", R"("a)", R"(a")", R"("a" "b")", R"(w/"a")", R"(W/ "a")", "W/",
                              R"(*, "a")", R"("a", *)", R"("a"b)", "**", "\"a\x7f\"", "\"a\nb\"", R"("a";q=1)"}) {
    EXPECT_FALSE(api::tagsIn(rubbish)) << rubbish;
  }
}

TEST_F(TagsTest, ChangeNeedsATagThatIsWholeAndStrong) {
  const std::string path = "/items/compression";
  const std::string other = "\"" + std::string(32, '0') + "\"";
  const auto now = [&] { return ask("GET", path).header("ETag"); };
  const auto put = [&](const std::string& tags) {
    const bool on = shm->config.compression == SHM_ON;
    return askIf(tags, "PUT", path, {{"value", on ? "off" : "on"}}).status;
  };
  for (const std::string& tags : {"W/" + now(), other, "W/" + now() + ", " + other, "\"x" + now().substr(1),
                                  now().substr(0, 20) + "\"", "\"" + now().substr(2)}) {
    const std::string before = everything();
    EXPECT_EQ(412, put(tags)) << tags;
    EXPECT_TRUE(before == everything()) << tags;
  }
  for (const std::string& tags : {std::string(), "x" + now(), now() + "x", now().substr(1, 32), "*, " + now()}) {
    const std::string before = everything();
    EXPECT_EQ(400, put(tags)) << tags;
    EXPECT_TRUE(before == everything()) << tags;
  }
  EXPECT_EQ(200, put(now()));
  EXPECT_EQ(200, put(other + " , " + now()));
  EXPECT_EQ(200, put("W/" + now() + "," + now()));
  EXPECT_EQ(200, put("*"));
}

TEST_F(TagsTest, LookIsSparedByAWeakTagToo) {
  const auto look = [&](const std::string& tags) {
    api::Request made = from(alice_, request("GET", "/rules"));
    made.headers["if-none-match"] = tags;
    return api::answer(made).status;
  };
  const std::string tag = ask("GET", "/rules").header("ETag");
  for (const std::string& tags : {tag, "W/" + tag, "\"x\", W/" + tag, std::string("*")})
    EXPECT_EQ(304, look(tags)) << tags;
  for (const std::string& tags : {std::string("\"x\""), "x" + tag, tag.substr(1, 32), std::string()}) {
    EXPECT_EQ(200, look(tags)) << tags;
  }
}

TEST_F(TagsTest, OperationOfABatchWhoseTagIsNoneStopsItAtItsBeginning) {
  Json first = sampleOperation();
  Json second = sampleOperation();
  second["ifMatch"] = "rubbish";
  const std::string before = everything();
  const api::Reply reply = ask("POST", "/batch", {{"operations", {first, second}}});
  EXPECT_EQ(400, reply.status) << reply.body;
  EXPECT_TRUE(before == everything());
}

TEST_F(TagsTest, EveryItemThatIsSetToWhatItIsStaysAndIsNotWritten) {
  int items = 0;
  for (const Json& item : jsonOf(ask("GET", "/items"))) {
    if (item["accepts"] == "read only" || item["value"] == "unset" || item["value"] == "invalid") continue;
    const std::string before = everything();
    const std::string path = "/items/" + item["item"].get<std::string>();
    const api::Reply reply = ask("PUT", path, {{"value", item["value"]}});
    if (reply.status == 422 || reply.status == 400) continue;  // a fresh store has values that nobody could set
    EXPECT_EQ(200, reply.status) << path << reply.body;
    EXPECT_EQ(false, jsonOf(reply)["changed"]) << path << reply.body;
    EXPECT_TRUE(before == everything()) << path;
    ++items;
  }
  EXPECT_GT(items, 20);
}

TEST_F(TagsTest, ModesRoutesRulesAndNamesThatAreSoAlreadyStay) {
  expectEqual("PUT", "/mode/double", Json::object());
  expectEqual("PUT", "/mode/policy-routing", {{"on", false}});
  Json route = {{"destination", "10.9.0.0/16"}, {"gateway", "192.0.2.254"}, {"disabled", true}};
  ASSERT_EQ(201, ask("POST", "/routes", route).status);
  expectEqual("PUT", "/routes/10.9.0.0/16", route);
  route["gateway"] = "192.0.2.253";
  EXPECT_EQ(true, jsonOf(ask("PUT", "/routes/10.9.0.0/16", route))["changed"]);
  const Json route6 = {{"destination", "fd09::/16"}, {"gateway", "fd01::1"}, {"disabled", true}};
  ASSERT_EQ(201, ask("POST", "/routes6", route6).status);
  expectEqual("PUT", "/routes6/fd09::/16", route6);
  ASSERT_EQ(201, ask("POST", "/rules", {{"position", 0}, {"protocol", "udp"}, {"kbit/s", 2048}}).status);
  expectEqual("PATCH", "/rules/0", {{"protocol", "udp"}, {"kbit/s", 2048}});
  ASSERT_EQ(200, ask("PUT", "/interfaces/lan/name", {{"name", "eth7"}}).status);
  expectEqual("PUT", "/interfaces/lan/name", {{"name", "eth7"}});
}

}  // namespace
}  // namespace kestrove::testing
