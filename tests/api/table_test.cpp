// SPDX-License-Identifier: Apache-2.0
// The table of requests, held to the grammar; and what a request has to be at all.
#include <sys/shm.h>
#include <unistd.h>

#include <set>

#include "tests/api/api_fixture.h"
#include "tools/api/router.h"
#include "tools/api/words.h"
#include "tools/ctl/place.h"

namespace kestrove::testing {
namespace {

class TableTest : public ApiTest {};

std::string example(const std::string& path) {
  std::string made = path;
  for (const std::string& name : api::placesIn(path)) {
    const std::string mark = "{" + name + "}";
    made.replace(made.find(mark), mark.size(), name == "item" ? "compression" : "1");
  }
  return made;
}

TEST_F(TableTest, EveryRowIsACommandWithItsOptionsAndItsRight) {
  for (const api::Endpoint& row : api::endpoints()) {
    if (!*row.words) continue;
    std::vector<std::string> words;
    for (const std::string& word : ctl::wordsOf(row.words)) {
      if (!word.starts_with("{") && !word.starts_with("-")) words.push_back(word);
    }
    const ctl::Command* command = ctl::placeBehind(ctl::grammar(), words).row;
    ASSERT_TRUE(command && command->run) << row.path;
    const std::string line = row.words;
    const bool asks = line == "confirm --status" || line.starts_with("support");
    EXPECT_EQ(command->changes && !asks, row.right == api::Right::kChange && !row.reads()) << row.method << row.path;
    for (const api::Field& field : row.fields) {
      if (!*field.option) continue;
      EXPECT_TRUE(std::ranges::any_of(ctl::grammar(),
                                      [&](const ctl::Command& one) {
                                        return one.words == command->words &&
                                               std::ranges::any_of(one.values, [&](const ctl::Value& value) {
                                                 return value.name == field.option;
                                               });
                                      }))
          << row.path << ": " << field.option;
    }
  }
}

TEST_F(TableTest, EveryPathWithEveryMethodNeedsSomebody) {
  for (const api::Endpoint& row : api::endpoints()) {
    for (const char* method : {"GET", "HEAD", "POST", "PUT", "PATCH", "DELETE", "OPTIONS", "TRACE"}) {
      const bool open = (row.path == std::string() && method == std::string("GET")) ||
                        (row.path == std::string("/session") && method == std::string("POST"));
      const int status = api::answer(request(method, example(row.path))).status;
      EXPECT_EQ(!open, status == 401) << method << " " << row.path << " " << status;
    }
  }
  EXPECT_EQ(401, api::answer(request("GET", "/nothing")).status) << "nobody learns what there is";
}

TEST_F(TableTest, PathsAndMethodsThatAreNotThere) {
  const Browser browser = browserOf("alice");
  for (const char* path : {"/nothing", "/rules/1/2", "/rules/", "//rules", "/rules/1/move/", "/Rules", "/rules%2f1"}) {
    EXPECT_EQ(404, ask(browser, "GET", path).status) << path;
  }
  EXPECT_EQ(400, ask(browser, "GET", "/rules/%zz").status);
  EXPECT_EQ(400, ask(browser, "GET", "/rules/%00").status);
  const api::Reply reply = ask(browser, "PATCH", "/rules");
  EXPECT_EQ(405, reply.status);
  EXPECT_EQ("GET, POST", reply.header("Allow"));
}

TEST_F(TableTest, BodiesThatMakeNoSense) {
  const Browser browser = browserOf("alice");
  const auto send = [&](const std::string& body, const std::string& type = "application/json") {
    api::Request made = from(browser, request("POST", "/rules", Json::object()));
    made.body = body;
    made.headers["content-type"] = type;
    return api::answer(made).status;
  };
  const int32_t before = shm->filterTable.ruleCount;
  for (const char* body : {"{", "[]", "3", "\"x\"", "{\"position\":}", "\xff", "{}", R"({"position":{}})",
                           R"({"position":"--json"})", R"({"position":"?"})", R"({"position":0,"nothing":1})",
                           R"({"position":null})", R"({"position":0,"any":"perhaps"})"}) {
    EXPECT_EQ(400, send(body)) << body;
  }
  EXPECT_EQ(400, send("{\"position\":" + std::string(100000, '[') + std::string(100000, ']') + "}"));
  EXPECT_EQ(415, send(R"({"position":0})", "text/plain"));
  EXPECT_EQ(413, send(std::string((1 << 20) + 1, ' ')));
  EXPECT_EQ(before, shm->filterTable.ruleCount);
}

TEST_F(TableTest, HeaderThatComesTwiceIsRefused) {
  api::Request made = from(browserOf("alice"), request("GET", "/rules"));
  made.fault = "host: given twice";
  EXPECT_EQ(400, api::answer(made).status);
}

TEST_F(TableTest, FilesOfTheMachineCannotBeNamed) {
  const Browser browser = browserOf("alice");
  EXPECT_EQ(400, ask(browser, "GET", "/diff", nullptr, {{"from", "/etc/passwd"}, {"to", "saved"}}).status);
  EXPECT_EQ(400, ask(browser, "GET", "/diff", nullptr, {{"from", "running"}, {"to", "factory.defaults"}}).status);
  EXPECT_EQ(200, ask(browser, "GET", "/diff", nullptr, {{"from", "running"}, {"to", "running"}}).status);
}

TEST_F(TableTest, WithoutAStoreThatIsSaid) {
  const Browser browser = browserOf("alice");
  dropStore();
  const api::Reply reply = ask(browser, "GET", "/rules");
  EXPECT_EQ(503, reply.status);
  EXPECT_EQ(ctl::kNoStore, jsonOf(reply)["error"]["exit"]);
  EXPECT_EQ("there is no store (shm-init builds it)", jsonOf(reply)["error"]["message"]);
  makeStore();
}

TEST_F(TableTest, AStoreThatMayNotBeUsedIsNotTakenForNone) {
  const Browser browser = browserOf("alice");
  setStoreMode(0600);
  shm_detach();
  shm = nullptr;
  ASSERT_EQ(0, seteuid(65534));
  const api::Reply reply = ask(browser, "GET", "/rules");
  ASSERT_EQ(0, seteuid(0));
  EXPECT_EQ(503, reply.status);
  EXPECT_EQ("the store: Permission denied", jsonOf(reply)["error"]["message"]);
}

TEST_F(TableTest, AnotherSystemsSegmentIsNoStore) {
  const Browser browser = browserOf("alice");
  dropStore();
  const int foreign = shmget(SHM_KEY, 4096, IPC_CREAT | 0600);
  ASSERT_NE(-1, foreign);
  const api::Reply reply = ask(browser, "GET", "/rules");
  EXPECT_EQ(503, reply.status);
  EXPECT_EQ("the segment under the store's key is no store", jsonOf(reply)["error"]["message"]);
  EXPECT_EQ(0, shmctl(foreign, IPC_RMID, nullptr));
  makeStore();
}

TEST_F(TableTest, StoreThatWasBuiltAnewIsTheOneThatIsAsked) {
  const Browser browser = browserOf("alice");
  ASSERT_EQ(200, ask(browser, "GET", "/items/wanLinkRate").status);
  const UserAccount alice = shm->config.users[0];
  const int id = shmget(SHM_KEY, 1, 0);
  ASSERT_EQ(0, shmctl(id, IPC_RMID, nullptr));
  const ShmData* old = shm;
  shm = nullptr;
  makeStore();
  shm->config.httpOperState = SHM_ON;
  shm->config.users[0] = alice;
  shm->config.userCount = 1;
  shm->config.wanLinkRate = 7654321;
  shmdt(old);
  EXPECT_EQ(7654321, jsonOf(ask(browser, "GET", "/items/wanLinkRate"))["value"]);
}

}  // namespace
}  // namespace kestrove::testing
