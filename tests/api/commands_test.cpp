// SPDX-License-Identifier: Apache-2.0
// What requests do to the store, and what they say of it.
#include <sys/stat.h>

#include "tests/api/api_fixture.h"
#include "tests/support/peer.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class CommandsTest : public ApiTest {
 protected:
  void SetUp() override {
    ApiTest::SetUp();
    alice_ = browserOf("alice");
    shm->eventLog.writeIndex = 0;
  }
  api::Reply ask(const std::string& method, const std::string& path, const Json& body = nullptr,
                 const api::Fields& query = {}) {
    return ApiTest::ask(alice_, method, path, body, query);
  }
  api::Reply askIf(const std::string& tag, const std::string& method, const std::string& path, const Json& body) {
    api::Request made = from(alice_, request(method, path, body));
    made.headers["if-match"] = tag;
    return api::answer(made);
  }
  int codeOf(const api::Reply& reply) { return jsonOf(reply)["error"].value("code", -1); }

  Browser alice_;
};

ino_t fileNumber(const std::string& path) {
  struct stat facts = {};
  stat(path.c_str(), &facts);
  return facts.st_ino;
}

TEST_F(CommandsTest, ItemsAreReadOneByOneAndTogether) {
  const Json all = jsonOf(ask("GET", "/items"));
  EXPECT_GT(all.size(), 50u);
  const Json one = jsonOf(ask("GET", "/items/wanLinkRate"));
  EXPECT_EQ("bit/s", one["unit"]);
  EXPECT_EQ(404, ask("GET", "/items/nosuch").status);
  EXPECT_EQ(404, ask("GET", "/items/interfaceMode").status) << "the words of saved scripts are no items";
  EXPECT_EQ(404, ask("PUT", "/items/interfaceMode", {{"value", "double"}}).status);
}

TEST_F(CommandsTest, ChangeOfAnItemIsOfWhoLoggedInByTheWeb) {
  const api::Reply reply = ask("PUT", "/items/compression", {{"value", "off"}});
  EXPECT_EQ(200, reply.status) << reply.body;
  EXPECT_EQ("off", jsonOf(reply)["value"]);
  EXPECT_EQ(true, jsonOf(reply)["changed"]);
  EXPECT_THAT(events(), ElementsAre("10 2 alice"));
  const Json revision = jsonOf(ask("GET", "/history"))[0];
  EXPECT_EQ("alice", revision["user"]);
  EXPECT_EQ("HTTP", revision["source"]);
}

TEST_F(CommandsTest, EqualValueChangesAndWritesNothing) {
  ASSERT_EQ(200, ask("PUT", "/items/compression", {{"value", true}}).status);
  ASSERT_EQ(200, ask("POST", "/save").status);
  const ino_t file = fileNumber("/etc/config/kestrove.conf");
  shm->eventLog.writeIndex = 0;
  const api::Reply reply = ask("PUT", "/items/compression", {{"value", "on"}});
  EXPECT_EQ(200, reply.status);
  EXPECT_EQ(false, jsonOf(reply)["changed"]) << reply.body;
  EXPECT_EQ(file, fileNumber("/etc/config/kestrove.conf"));
  EXPECT_TRUE(events().empty());
}

TEST_F(CommandsTest, RefusalsOfTheLibraryKeepTheirCodes) {
  api::Reply reply = ask("PUT", "/items/wanLinkRate", {{"value", 1}});
  EXPECT_EQ(422, reply.status);
  EXPECT_EQ(SHM_ERANGE, codeOf(reply));
  reply = ask("PUT", "/items/minRate", {{"value", 1}});
  EXPECT_EQ(422, reply.status);
  EXPECT_EQ(SHM_EREADONLY, codeOf(reply));
}

TEST_F(CommandsTest, TagsKeepTwoOperatorsApart) {
  const api::Reply first = ask("GET", "/rules");
  const std::string tag = first.header("ETag");
  ASSERT_EQ(34u, tag.size());
  api::Request again = from(alice_, request("GET", "/rules"));
  again.headers["if-none-match"] = tag;
  EXPECT_EQ(304, api::answer(again).status);
  const Json rule = {{"position", 0}, {"destination", "198.51.100.0/24"}};
  EXPECT_EQ(201, askIf(tag, "POST", "/rules", rule).status);
  const int32_t count = shm->filterTable.ruleCount;
  const api::Reply late = askIf(tag, "POST", "/rules", rule);
  EXPECT_EQ(412, late.status) << late.body;
  EXPECT_EQ(count, shm->filterTable.ruleCount);
  EXPECT_NE(tag, ask("GET", "/rules").header("ETag"));
  EXPECT_EQ(400, askIf(tag, "POST", "/save", nullptr).status) << "what has no tag cannot be matched";
}

TEST_F(CommandsTest, RulesAreAddedChangedMovedAndDeleted) {
  const api::Reply added =
      ask("POST", "/rules", {{"position", 0}, {"protocol", "tcp"}, {"destinationPorts", "443"}, {"kbit/s", 2048}});
  EXPECT_EQ(201, added.status) << added.body;
  EXPECT_EQ("443", jsonOf(ask("GET", "/rules/0"))["destinationPorts"]);
  EXPECT_EQ(200, ask("PATCH", "/rules/0", {{"acceleration", false}}).status);
  EXPECT_EQ("off", jsonOf(ask("GET", "/rules/0"))["acceleration"]);
  ASSERT_EQ(201, ask("POST", "/rules", {{"position", 1}, {"protocol", "udp"}}).status);
  EXPECT_EQ(200, ask("POST", "/rules/1/move", {{"to", 0}}).status);
  EXPECT_EQ("udp", jsonOf(ask("GET", "/rules/0"))["protocol"]);
  EXPECT_EQ(200, ask("DELETE", "/rules/0").status);
  EXPECT_EQ(404, ask("DELETE", "/rules/99").status);
  EXPECT_EQ(404, ask("PATCH", "/rules/99", {{"kbit/s", 9}}).status);
  EXPECT_EQ(404, ask("GET", "/rules/99").status);
  EXPECT_EQ(422, ask("DELETE", "/rules/1").status) << "the default rule stays";
}

TEST_F(CommandsTest, UsersAndTheirPasswords) {
  const api::Reply weak = ask("POST", "/users", {{"name", "carol"}, {"password", "password"}});
  EXPECT_EQ(422, weak.status);
  EXPECT_EQ(SHM_EINVAL, codeOf(weak));
  EXPECT_EQ(201, ask("POST", "/users", {{"name", "carol"}, {"password", kPassword}, {"administrator", true}}).status);
  EXPECT_EQ(SHM_EEXIST, codeOf(ask("POST", "/users", {{"name", "carol"}, {"password", kPassword}})));
  EXPECT_EQ(true, jsonOf(ask("GET", "/users/carol"))["administrator"]);
  const Json change = {{"oldPassword", kPassword}, {"newPassword", "Xyzuvw9#k"}};
  EXPECT_EQ(200, ask("PUT", "/users/carol/password", change).status);
  EXPECT_EQ(SHM_EPASSWORD, codeOf(ask("PUT", "/users/carol/password", change)));
  EXPECT_EQ(400, ask("POST", "/users", {{"name", "david"}, {"password", "Passw0rd!\nx"}}).status);
  EXPECT_EQ(200, ask("DELETE", "/users/carol").status);
  EXPECT_EQ(404, ask("DELETE", "/users/carol").status);
  EXPECT_THAT(ask("GET", "/history").body, ::testing::Not(HasSubstr(kPassword)));
}

TEST_F(CommandsTest, RoutesAndAddressesThatAreNotThere) {
  EXPECT_EQ(404, ask("DELETE", "/routes/10.9.0.0/16").status);
  EXPECT_EQ(404, ask("DELETE", "/routes6/fd09::/16").status);
  EXPECT_EQ(404, ask("DELETE", "/addresses/10.9.9.9").status);
  EXPECT_EQ(404, ask("GET", "/history/77").status);
  EXPECT_EQ(404, ask("POST", "/history/77/rollback").status);
  EXPECT_EQ(404, ask("GET", "/interfaces/nosuch/link").status);
}

TEST_F(CommandsTest, EveryListCanBeAskedFor) {
  for (const char* path : {"/status", "/check", "/rules", "/users", "/routes", "/routes6", "/addresses", "/mode",
                           "/engine", "/tasks", "/events", "/statistics", "/history", "/confirm", "/state", "/clock",
                           "/lost", "/notifications", "/interfaces"}) {
    const api::Reply reply = ask("GET", path);
    EXPECT_EQ(200, reply.status) << path << reply.body;
    EXPECT_FALSE(jsonOf(reply).is_discarded()) << path;
  }
}

TEST_F(CommandsTest, LockedStoreIsToldOfWithItsHolder) {
  Peer holder(holdLock);
  ASSERT_EQ('l', holder.line().hear());
  const std::string process = "process " + std::to_string(holder.pid());
  const api::Reply reply = ask("GET", "/rules");
  holder.kill();
  EXPECT_EQ(503, reply.status);
  EXPECT_EQ(ctl::kLocked, jsonOf(reply)["error"]["exit"]);
  EXPECT_THAT(reply.body, HasSubstr(process));
  EXPECT_EQ("1", reply.header("Retry-After"));
  EXPECT_EQ(200, ask("GET", "/rules").status);
}

TEST_F(CommandsTest, ScriptIsCheckedAndApplied) {
  const std::string script = "set wanLinkRate 4096000\nrule add 0 --proto udp --target bridge\n";
  const api::Reply checked = ask("POST", "/apply", {{"script", script}, {"check", true}});
  EXPECT_EQ(200, checked.status) << checked.body;
  EXPECT_EQ(true, jsonOf(checked)["changed"]);
  EXPECT_NE(4096000u, shm->config.wanLinkRate);
  EXPECT_EQ(200, ask("POST", "/apply", {{"script", script}}).status);
  EXPECT_EQ(4096000u, shm->config.wanLinkRate);
  EXPECT_EQ(false, jsonOf(ask("POST", "/apply", {{"script", script}}))["changed"]);
  const api::Reply wrong = ask("POST", "/apply", {{"script", "set wanLinkRate 1\n"}});
  EXPECT_EQ(422, wrong.status) << wrong.body;
  EXPECT_EQ(400, ask("POST", "/apply", {{"script", "nonsense\n"}}).status);
}

TEST_F(CommandsTest, ScriptAndRollbackAreMadeOnlyWhileTheSettingsAreWhatIfMatchSays) {
  const api::Reply before = ask("GET", "/settings", nullptr, {{"state", "running"}});
  ASSERT_EQ(200, before.status) << before.body;
  const std::string tag = before.header("ETag");
  const auto rate = [](const char* value) { return Json{{"script", std::string("set wanLinkRate ") + value + "\n"}}; };
  ASSERT_EQ(200, askIf(tag, "POST", "/apply", rate("4096000")).status);
  const api::Reply late = askIf(tag, "POST", "/apply", rate("5120000"));
  EXPECT_EQ(412, late.status) << late.body;
  const std::string here = std::to_string(jsonOf(ask("GET", "/history"))[0]["revision"].get<int>());
  ASSERT_EQ(200, ask("POST", "/apply", rate("6144000")).status);
  EXPECT_EQ(412, askIf(tag, "POST", "/history/" + here + "/rollback", Json::object()).status);
  EXPECT_EQ(6144000u, shm->config.wanLinkRate);
  const std::string fresh = ask("GET", "/settings", nullptr, {{"state", "running"}}).header("ETag");
  EXPECT_EQ(200, askIf(fresh, "POST", "/apply", rate("6144000")).status) << "nothing to change is no mismatch";
  EXPECT_EQ(200, askIf(fresh, "POST", "/history/" + here + "/rollback", Json::object()).status);
  EXPECT_EQ(4096000u, shm->config.wanLinkRate);
}

TEST_F(CommandsTest, RevisionComesBackByARollback) {
  ASSERT_EQ(200, ask("PUT", "/items/wanLinkRate", {{"value", 4096000}}).status);
  ASSERT_EQ(200, ask("PUT", "/items/wanLinkRate", {{"value", 5120000}}, {{"comment", "more"}}).status);
  const Json history = jsonOf(ask("GET", "/history"));
  EXPECT_EQ("more", history[0]["comment"]);
  const std::string before = std::to_string(history[1]["revision"].get<int>());
  EXPECT_EQ(200, ask("GET", "/history/" + before).status);
  EXPECT_EQ(200, ask("POST", "/history/" + before + "/rollback").status);
  EXPECT_EQ(4096000u, shm->config.wanLinkRate);
}

TEST_F(CommandsTest, ChangeThatIsToBeConfirmedIsConfirmedByItsUserAndIsTheOnlyOne) {
  add("bertha", 1);
  const Browser bertha = browserOf("bertha");
  const api::Reply made = ask("PUT", "/items/wanLinkRate", {{"value", 4096000}}, {{"confirm", "5"}});
  ASSERT_EQ(200, made.status) << made.body;
  EXPECT_EQ("alice", jsonOf(made)["confirm"]["user"]);
  EXPECT_EQ(true, jsonOf(ask("GET", "/confirm"))["pending"]);
  EXPECT_EQ(409, ApiTest::ask(bertha, "PUT", "/items/wanLinkRate", {{"value", 5120000}}, {{"confirm", "5"}}).status);
  EXPECT_EQ(403, ApiTest::ask(bertha, "POST", "/confirm").status);
  EXPECT_EQ(200, ask("DELETE", "/confirm").status);
  EXPECT_NE(4096000u, shm->config.wanLinkRate);
  EXPECT_EQ(400, ask("PUT", "/items/wanLinkRate", {{"value", 1}}, {{"confirm", "soon"}}).status);
}

TEST_F(CommandsTest, BatchNamesTheOperationThatFailed) {
  const auto put = [](const char* value) {
    return Json{{"method", "PUT"}, {"path", "/items/wanLinkRate"}, {"body", {{"value", value}}}};
  };
  const auto send = [&](std::vector<Json> operations) { return ask("POST", "/batch", {{"operations", operations}}); };
  api::Reply reply = send({put("4096000"), put("1"), put("5120000")});
  EXPECT_EQ(207, reply.status) << reply.body;
  EXPECT_EQ(1, jsonOf(reply)["failed"]);
  EXPECT_EQ(SHM_ERANGE, jsonOf(reply)["results"][1]["body"]["error"]["code"]);
  EXPECT_EQ(jsonOf(reply)["error"], jsonOf(reply)["results"][1]["body"]["error"]);
  EXPECT_EQ(4096000u, shm->config.wanLinkRate) << "nothing behind it is done";
  reply = send({put("1"), put("5120000")});
  EXPECT_EQ(422, reply.status);
  reply = send({put("5120000"), Json{{"method", "PUT"}, {"path", "/nothing"}}});
  EXPECT_EQ(404, reply.status);
  EXPECT_THAT(reply.body, HasSubstr("operation 1"));
  EXPECT_EQ(4096000u, shm->config.wanLinkRate) << "all are looked at first";
  EXPECT_EQ(400, send({Json{{"method", "POST"}, {"path", "/batch"}, {"body", Json::object()}}}).status);
}

TEST_F(CommandsTest, OperationOfABatchIsMadeOnlyWhileItsTableIsWhatItSays) {
  const std::string tag = ask("GET", "/items/wanLinkRate").header("ETag");
  Json operation = {
      {"method", "PUT"}, {"path", "/items/wanLinkRate"}, {"body", {{"value", 4096000}}}, {"ifMatch", tag}};
  EXPECT_EQ(200, ask("POST", "/batch", {{"operations", {operation}}}).status);
  operation["body"]["value"] = 5120000;
  EXPECT_EQ(412, ask("POST", "/batch", {{"operations", {operation}}}).status);
  EXPECT_EQ(4096000u, shm->config.wanLinkRate);
  EXPECT_EQ(400, askIf(tag, "POST", "/batch", {{"operations", {operation}}}).status) << "the whole has no tag";
  EXPECT_EQ(400, askIf(tag, "POST", "/preview", operation).status);
}

TEST_F(CommandsTest, BatchThatIsToBeConfirmedIsConfirmedAsAWhole) {
  shm->config.compression = SHM_ON;
  const uint32_t before = shm->config.wanLinkRate;
  const auto put = [](const char* item, const char* value) {
    return Json{{"method", "PUT"}, {"path", std::string("/items/") + item}, {"body", {{"value", value}}}};
  };
  const Json operations = {put("wanLinkRate", "4096000"), put("compression", "off")};
  const api::Reply reply = ask("POST", "/batch", {{"operations", operations}}, {{"confirm", "5"}});
  ASSERT_EQ(200, reply.status) << reply.body;
  EXPECT_EQ(200, ask("DELETE", "/confirm").status);
  EXPECT_EQ(before, shm->config.wanLinkRate);
  EXPECT_EQ(SHM_ON, shm->config.compression);
}

TEST_F(CommandsTest, ChangeThatTheFileDoesNotHaveSaysSo) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  const api::Reply reply = ask("PUT", "/items/wanLinkRate", {{"value", 4096000}});
  EXPECT_EQ(200, reply.status);
  EXPECT_EQ(false, jsonOf(reply)["saved"]);
  EXPECT_EQ("the store is in Configuration Mode", jsonOf(reply)["reason"]);
}

}  // namespace
}  // namespace kestrove::testing
