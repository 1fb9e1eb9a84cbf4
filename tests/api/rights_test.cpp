// SPDX-License-Identifier: Apache-2.0
// Who may do what: every row of the table of requests.
#include "tests/api/samples.h"
#include "tools/api/tokens.h"

namespace kestrove::testing {
namespace {

class RightsTest : public ApiTest {
 protected:
  void SetUp() override {
    ApiTest::SetUp();
    guest_ = browserOf("guest");
    alice_ = browserOf("alice");
    before_ = everything();
  }
  static api::Request made(const api::Endpoint& row) {
    api::Request whole = request(row.method, samplePath(row), sampleBody(row));
    whole.query = sampleQuery(row);
    return whole;
  }
  static int byToken(const std::string& token, api::Request whole) {
    whole.headers["authorization"] = "Bearer " + token;
    return api::answer(whole).status;
  }

  Browser guest_, alice_;
  std::string before_;
};

TEST_F(RightsTest, EveryChangeIsRefusedToWhoMayOnlyRead) {
  const std::string token = api::addToken("watcher", false);
  before_ = everything();
  int changes = 0;
  for (const api::Endpoint& row : api::endpoints()) {
    if (row.right != api::Right::kChange) continue;
    EXPECT_EQ(403, api::answer(from(guest_, made(row))).status) << row.method << row.path;
    EXPECT_EQ(403, byToken(token, made(row))) << row.method << row.path;
    ++changes;
  }
  EXPECT_GT(changes, 40);
  EXPECT_TRUE(before_ == everything());
}

TEST_F(RightsTest, NothingButALookIsDoneWithoutTheSessionsOwnWord) {
  for (const api::Endpoint& row : api::endpoints()) {
    if (row.reads() || row.right == api::Right::kNone) continue;
    for (const char* word : {"", guest_.csrf.c_str()}) {
      api::Request whole = from(alice_, made(row));
      whole.headers["x-csrf-token"] = word;
      EXPECT_EQ(403, api::answer(whole).status) << row.method << row.path;
    }
    api::Request whole = from(alice_, made(row));
    whole.headers.erase("x-csrf-token");
    EXPECT_EQ(403, api::answer(whole).status) << row.method << row.path;
  }
  EXPECT_TRUE(before_ == everything());
}

TEST_F(RightsTest, NothingIsDoneForAnotherPage) {
  for (const api::Endpoint& row : api::endpoints()) {
    api::Request whole = from(alice_, made(row));
    whole.headers["origin"] = "https://evil.example";
    EXPECT_EQ(403, api::answer(whole).status) << row.method << row.path;
    whole = from(alice_, made(row));
    whole.headers["host"] = "evil.example";
    EXPECT_EQ(421, api::answer(whole).status) << row.method << row.path;
  }
  EXPECT_TRUE(before_ == everything());
}

TEST_F(RightsTest, SwitchedOffNothingIsAnsweredButThat) {
  const std::string token = api::addToken("deploy", true);
  shm->config.httpOperState = SHM_OFF;
  before_ = everything();
  for (const api::Endpoint& row : api::endpoints()) {
    const int wanted = row.special == std::string("about") ? 200 : 403;
    EXPECT_EQ(wanted, api::answer(from(alice_, made(row))).status) << row.method << row.path;
    EXPECT_EQ(wanted, byToken(token, made(row))) << row.method << row.path;
  }
  EXPECT_TRUE(before_ == everything());
}

}  // namespace
}  // namespace kestrove::testing
