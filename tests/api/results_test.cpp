// SPDX-License-Identifier: Apache-2.0
// What requests give is what doc/api.yaml says of them: the shapes that both are made from.
#include "tests/api/samples.h"
#include "tools/api/openapi.h"

namespace kestrove::testing {
namespace {

class ResultsTest : public ApiTest {
 protected:
  void SetUp() override {
    ApiTest::SetUp();
    alice_ = browserOf("alice");
    ASSERT_EQ(200, ask(alice_, "PUT", "/items/compression", {{"value", "off"}}).status);  // history has begun
  }
  void expectShape(const api::Endpoint& row, const api::Reply& reply) {
    ASSERT_EQ(row.done, reply.status) << row.method << row.path << reply.body;
    const auto shape = api::resultShape(row);
    ASSERT_TRUE(shape) << row.method << row.path << " has none";
    EXPECT_EQ("", ctl::mismatch(*shape, jsonOf(reply))) << row.method << row.path << reply.body;
  }

  Browser alice_;
};

bool isJson(const api::Endpoint& row) {
  const std::string special = row.special;
  return special != "stream" && special != "metrics" && special != "file";
}

TEST_F(ResultsTest, EveryLookGivesWhatItsRowSays) {
  for (const api::Endpoint& row : api::endpoints()) {
    const bool needsNoPort = std::string(row.path).find("{port}") == std::string::npos;  // here is none
    if (!row.reads() || !isJson(row) || !needsNoPort) continue;
    expectShape(row, ask(alice_, "GET", samplePath(row), nullptr, sampleQuery(row)));
  }
}

TEST_F(ResultsTest, EveryResultIsWrittenDown) {
  for (const api::Endpoint& row : api::endpoints()) {
    EXPECT_TRUE(!isJson(row) || api::resultShape(row)) << row.method << row.path;
  }
}

TEST_F(ResultsTest, SessionsAndBatchesGiveWhatTheirRowsSay) {
  const auto rowOf = [](const std::string& special) {
    return *std::ranges::find_if(api::endpoints(), [&](const api::Endpoint& row) { return row.special == special; });
  };
  expectShape(rowOf("log-in"), logInAs("alice"));
  const Json operation = {{"method", "PUT"}, {"path", "/items/compression"}, {"body", {{"value", "on"}}}};
  expectShape(rowOf("batch"), ask(alice_, "POST", "/batch", {{"operations", {operation}}}));
  expectShape(rowOf("log-out"), ask(alice_, "DELETE", "/session"));
}

}  // namespace
}  // namespace kestrove::testing
