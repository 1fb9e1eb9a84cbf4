// SPDX-License-Identifier: Apache-2.0
// Every row of the table of requests while another process has the store's lock, from the beginning or from any moment
// at which the request gives it up.
#include <cstring>

#include "tests/api/lock_thief.h"
#include "tests/api/samples.h"

namespace kestrove::testing {
namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;

constexpr double kPatience = 2.001;

class LockTest : public ApiTest {
 protected:
  void SetUp() override {
    ApiTest::SetUp();
    begin();
  }
  // A store of its own for the next request.
  void renew() {
    ApiTest::TearDown();
    ApiTest::SetUp();
    begin();
  }
  void begin() {
    add("bertha", 2);
    alice_ = browserOf("alice");
    shm->config.kestroveOperState = SHM_ON;
    change({});  // history has begun
  }
  void change(const api::Fields& query) {
    const bool on = shm->config.compression == SHM_ON;
    ASSERT_EQ(200, ask(alice_, "PUT", "/items/compression", {{"value", on ? "off" : "on"}}, query).status);
  }
  api::Request made(const api::Endpoint& row) {
    api::Request whole = from(alice_, request(row.method, samplePath(row), sampleBody(row)));
    whole.query = sampleQuery(row);
    if (row.path == std::string("/confirm")) change({{"confirm", "5"}});
    return whole;
  }

  Browser alice_;
};

// Streams are of the socket alone.
bool isAnswered(const api::Endpoint& row) { return row.special != std::string("stream"); }

// Whether what the row asks for is known without the lock.
bool needsNoLock(const api::Endpoint& row) {
  const std::string special = row.special;
  const std::string words = row.words;
  return special == "about" || special == "session" || special == "log-out" || special == "metrics" ||
         special == "file" || words == "status" || words == "clock show" || words == "state list" ||
         words.starts_with("history") || words == "confirm --status" || words == "confirm";
}

// Whether the store is another one behind that reply.
bool isAnother(const api::Endpoint& row, int status) {
  return row.path == std::string("/confirm") || (!row.reads() && status != 503);
}

// Which has no lease here, and needs the store for nothing.
bool isDhcp(const api::Endpoint& row) { return row.path == std::string("/dhcp"); }

TEST_F(LockTest, EveryRequestThatNeedsTheStoreIsToldWhoHasIt) {
  LockThief thief;
  int told = 0;
  for (const api::Endpoint& row : api::endpoints()) {
    if (!isAnswered(row)) continue;
    SCOPED_TRACE(std::string(row.method) + " " + row.path);
    const api::Request asked = made(row);
    const std::string before = everything();
    thief.strikeAt(0);
    const api::Reply reply = api::answer(asked);
    thief.letGo();
    EXPECT_EQ(0, thief.endlessWaits());
    EXPECT_LE(thief.secondsWaited(), kPatience);
    EXPECT_EQ(needsNoLock(row) ? row.done : isDhcp(row) ? 500 : 503, reply.status) << reply.body;
    if (reply.status == 503) {
      EXPECT_THAT(reply.body, HasSubstr("process " + std::to_string(thief.pid()) + " (api_test)"));
      EXPECT_EQ("1", reply.header("Retry-After"));
      EXPECT_TRUE(before == everything());
      ++told;
    }
    EXPECT_NE(503, api::answer(asked).status) << "served as before";
    renew();
  }
  EXPECT_GT(told, 60);
}

TEST_F(LockTest, LockThatIsTakenInBetweenIsWaitedForNoLongerAndNothingIsChangedBehindARefusal) {
  LockThief thief;
  int refused = 0;
  for (const api::Endpoint& row : api::endpoints()) {
    for (int release = 1; isAnswered(row); ++release) {
      SCOPED_TRACE(std::string(row.method) + " " + row.path + ", release " + std::to_string(release));
      const api::Request asked = made(row);
      const std::string files = everything();
      const std::string before(reinterpret_cast<const char*>(shm), SHM_SIZE);
      thief.strikeAt(release);
      const api::Reply reply = api::answer(asked);
      thief.letGo();
      EXPECT_EQ(0, thief.endlessWaits()) << reply.body;
      EXPECT_LE(thief.secondsWaited(), kPatience);
      if (reply.status == 503) {
        ++refused;
        EXPECT_TRUE(files == everything()) << reply.body;
        EXPECT_EQ(0, memcmp(before.data(), shm, SHM_SIZE)) << reply.body;
      }
      if (isAnother(row, reply.status)) renew();
      if (!thief.struck()) break;
    }
  }
  EXPECT_GT(refused, 60);
}

}  // namespace
}  // namespace kestrove::testing
