// SPDX-License-Identifier: Apache-2.0
// What is done to the appliance as a whole, and what is said when something fails.
#include <cstring>
#include <limits>

#include "tests/api/api_fixture.h"
#include "tests/support/peer.h"
#include "tests/support/recorder.h"
#include "tools/ctl/settings/lines.h"

namespace kestrove::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class ControlTest : public ApiTest {
 protected:
  void SetUp() override {
    ApiTest::SetUp();
    alice_ = browserOf("alice");
    guest_ = browserOf("guest");
    shm->eventLog.writeIndex = 0;
    clearRecords();
  }
  api::Reply ask(const std::string& method, const std::string& path, const Json& body = nullptr,
                 const api::Fields& query = {}) {
    return ApiTest::ask(alice_, method, path, body, query);
  }

  Browser alice_;
  Browser guest_;
};

TEST_F(ControlTest, ApplianceIsRestartedAndSwitchedOffByWhoMay) {
  for (const char* path : {"/reboot", "/poweroff", "/factory-reset", "/preview"}) {
    EXPECT_EQ(403, ApiTest::ask(guest_, "POST", path).status) << path;
  }
  EXPECT_THAT(programs(), IsEmpty());
  const api::Reply reply = ask("POST", "/reboot");
  EXPECT_EQ(200, reply.status) << reply.body;
  EXPECT_THAT(programs(), ElementsAre("/sbin/reboot"));
  EXPECT_EQ(200, ask("POST", "/poweroff").status);
  EXPECT_THAT(programs(), ElementsAre("/sbin/reboot", "/sbin/poweroff"));
  EXPECT_THAT(events(), ::testing::Each(HasSubstr(" 2 alice")));
}

TEST_F(ControlTest, RestartThatFailsSaysSo) {
  answer("reboot", "", 3);
  const api::Reply reply = ask("POST", "/reboot");
  EXPECT_EQ(500, reply.status);
  EXPECT_EQ("/sbin/reboot gave 3", jsonOf(reply)["error"]["message"]);
}

TEST_F(ControlTest, FactoryResetEndsEverySessionOfWhoIsNoMore) {
  ASSERT_EQ(0, save_shared_memory());
  const api::Reply reply = ask("POST", "/factory-reset", {{"noReboot", true}});
  EXPECT_EQ(200, reply.status) << reply.body;
  EXPECT_THAT(programs(), Not(Contains("/sbin/reboot")));
  EXPECT_EQ(401, ask("GET", "/items").status);
}

TEST_F(ControlTest, LeaseThatDoesNotComeIsTold) {
  const api::Reply reply = ask("POST", "/dhcp", {{"interface", "nosuch0"}, {"timeout", 1}});
  EXPECT_EQ(500, reply.status) << reply.body;
  EXPECT_THAT(reply.body, HasSubstr("no lease within 1 seconds"));
}

TEST_F(ControlTest, MetricsAreText) {
  const api::Reply reply = ApiTest::ask(guest_, "GET", "/metrics");
  EXPECT_EQ(200, reply.status);
  EXPECT_EQ("text/plain; version=0.0.4; charset=utf-8", reply.header("Content-Type"));
  EXPECT_THAT(reply.body, HasSubstr("\nkestrove_up 1\n"));
}

TEST_F(ControlTest, NotificationsAreSwitched) {
  shm->notificationStatus = 5;
  const std::pair<bool, bool> kSteps[] = {{true, true}, {true, false}, {false, true}, {false, false}};
  for (const auto& [on, changes] : kSteps) {
    const std::string before = everything();
    const api::Reply reply = ask("PUT", "/notifications/2", {{"on", on}});
    EXPECT_EQ(200, reply.status) << reply.body;
    EXPECT_EQ(changes, jsonOf(reply)["changed"]) << reply.body;
    EXPECT_EQ(on ? 7 : 5, shm->notificationStatus) << "the others stay";
    EXPECT_EQ(on, jsonOf(ask("GET", "/notifications"))[1]["on"]);
    EXPECT_TRUE(before == everything());
  }
}

TEST_F(ControlTest, WhatAPathNamesAndThereIsNotIsNotFound) {
  for (const char* number : {"0", "4", "x", "-1", "99999999999999999999", "2x"}) {
    EXPECT_EQ(404, ask("PUT", "/notifications/" + std::string(number), {{"on", true}}).status) << number;
  }
  for (const char* port : {"lans", "LAN", "router", "0", "eth0"}) {
    EXPECT_EQ(404, ask("GET", "/interfaces/" + std::string(port) + "/link").status) << port;
  }
  for (const char* port : {"lans", "bridge", "1"}) {
    EXPECT_EQ(404, ask("PUT", "/interfaces/" + std::string(port) + "/name", {{"name", "eth7"}}).status) << port;
  }
  EXPECT_EQ(422, ask("PUT", "/interfaces/lan/name", {{"name", "an impossible name"}}).status);
}

TEST_F(ControlTest, ChangesAndLogInsAreToldWhoHoldsTheStore) {
  Peer holder(holdLock);
  ASSERT_EQ('l', holder.line().hear());
  const std::string process = "process " + std::to_string(holder.pid());
  const std::string before(reinterpret_cast<const char*>(shm), SHM_SIZE);
  for (const api::Reply& reply : {ask("PUT", "/items/compression", {{"value", "off"}}), logInAs("alice")}) {
    EXPECT_EQ(503, reply.status) << reply.body;
    EXPECT_THAT(reply.body, HasSubstr(process));
    EXPECT_EQ(ctl::kLocked, jsonOf(reply)["error"]["exit"]);
    EXPECT_EQ("1", reply.header("Retry-After"));
  }
  EXPECT_TRUE(before == std::string(reinterpret_cast<const char*>(shm), SHM_SIZE));
  holder.kill();
}

TEST_F(ControlTest, FileThatCannotBeWrittenIsToldWithTheErrorOfTheSystem) {
  strcpy(shm->config.configFileName, "/nowhere/kestrove.conf");
  api::Reply reply = ask("POST", "/save");
  EXPECT_EQ(500, reply.status) << reply.body;
  EXPECT_EQ("ENOENT", jsonOf(reply)["error"]["errno"]["name"]) << reply.body;
  reply = ask("PUT", "/items/compression", {{"value", "off"}});
  EXPECT_EQ(200, reply.status) << reply.body;
  EXPECT_EQ(false, jsonOf(reply)["saved"]);
  EXPECT_EQ("ENOENT", jsonOf(reply)["error"]["errno"]["name"]) << reply.body;
  EXPECT_EQ(SHM_OFF, shm->config.compression) << "the store has it";
}

TEST_F(ControlTest, RequestWithinARequestHasItsQuery) {
  Json operation = {
      {"method", "PUT"}, {"path", "/items/compression?comment=less%20of+it"}, {"body", {{"value", "off"}}}};
  const api::Reply reply = ask("POST", "/batch", {{"operations", {operation}}});
  EXPECT_EQ(200, reply.status) << reply.body;
  EXPECT_EQ("less of it", jsonOf(ask("GET", "/history"))[0]["comment"]);
  const Json wrong = {{"method", "DELETE"}, {"path", "/addresses/fd07::1?bridge=%zz"}};
  EXPECT_EQ(400, ask("POST", "/batch", {{"operations", {wrong}}}).status);
}

TEST_F(ControlTest, WhatChangesNothingOrTakesAPasswordHasNoPreview) {
  const auto preview = [&](const char* method, const char* path, const Json& body) {
    return ask("POST", "/preview", {{"method", method}, {"path", path}, {"body", body}}).status;
  };
  EXPECT_EQ(400, preview("POST", "/users", {{"name", "carol"}, {"password", kPassword}}));
  EXPECT_EQ(400, preview("POST", "/batch", {{"operations", Json::array()}}));
  EXPECT_EQ(404, preview("POST", "/nothing", Json::object()));
  EXPECT_EQ(400, ask("POST", "/preview", {{"method", "GET"}, {"path", "/items"}}).status);
  EXPECT_EQ(400, ask("POST", "/preview").status);
}

TEST_F(ControlTest, AScriptMayHaveAllRules) {
  FilterRule rule = {};
  memset(&rule, 0xff, sizeof rule);
  rule.ipVersion = SHM_FAMILY_IPV6;
  for (int32_t* number : {&rule.srcPort, &rule.srcPortEnd, &rule.destPort, &rule.destPortEnd, &rule.priority}) {
    *number = std::numeric_limits<int32_t>::min();
  }
  rule.srcPortEnd = rule.destPortEnd = rule.bandwidth = std::numeric_limits<int32_t>::max();
  EXPECT_LT(SHM_RULES * (ctl::ruleLine(rule).size() + strlen("\\n")), 3u << 20);
}

// Only of who may apply it.
TEST_F(ControlTest, AScriptIsLongerThanOtherBodies) {
  std::string lines;
  while (lines.size() < 2 << 20) lines += "# " + std::string(1000, 'x') + "\n";
  const Json script = {{"script", lines}, {"check", true}};
  EXPECT_EQ(200, ask("POST", "/apply", script).status);
  EXPECT_NE(413, ask("POST", "/preview", {{"method", "POST"}, {"path", "/apply"}, {"body", script}}).status);
  EXPECT_EQ(413, ApiTest::ask(guest_, "POST", "/apply", script).status);
  EXPECT_EQ(413, ask("POST", "/save", script).status);
  EXPECT_EQ(413, api::answer(request("POST", "/apply", script)).status);
  shm->config.httpOperState = SHM_OFF;
  EXPECT_EQ(413, ask("POST", "/apply", script).status);
}

// A member for a person, one for a program; the library's code and the system's where there was one.
TEST_F(ControlTest, EveryRefusalHasTheSameShape) {
  const std::pair<int, api::Reply> kRefusals[] = {{400, ask("POST", "/rules", {{"nothing", 1}})},
                                                  {401, api::answer(request("GET", "/rules"))},
                                                  {403, ApiTest::ask(guest_, "POST", "/save")},
                                                  {404, ask("GET", "/nothing")},
                                                  {405, ask("PATCH", "/rules")},
                                                  {413, ask("POST", "/apply", {{"script", std::string(4 << 20, '#')}})},
                                                  {422, ask("PUT", "/items/wanLinkRate", {{"value", 1}})}};
  for (const auto& [status, reply] : kRefusals) {
    EXPECT_EQ(status, reply.status) << reply.body;
    const Json error = jsonOf(reply)["error"];
    EXPECT_FALSE(error["message"].get<std::string>().empty()) << status;
    EXPECT_TRUE(error["exit"].is_number()) << status;
    EXPECT_EQ(status == 422, error.contains("code")) << reply.body;
    EXPECT_EQ("application/json", reply.header("Content-Type")) << status;
  }
}

}  // namespace
}  // namespace kestrove::testing
