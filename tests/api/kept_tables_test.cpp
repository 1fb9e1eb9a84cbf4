// SPDX-License-Identifier: Apache-2.0
// Tables that are answered again without the store's lock.
#include "tools/api/kept_tables.h"

#include <unistd.h>

#include <random>

#include "tests/api/api_fixture.h"
#include "tests/support/peer.h"
#include "tools/ctl/grammar.h"

namespace kestrove::testing {
namespace {

class KeptTablesTest : public ApiTest {
 protected:
  static ctl::Session session() {
    ctl::Session made;
    made.json = true;
    return made;
  }
};

constexpr const char* kTables[] = {"show",       "show compression", "rule list", "user list",
                                   "route list", "route6 list",      "mode show", "address list"};

// One byte anywhere in the store becomes another, as if somebody had written it.
void spoil(std::mt19937& random) {
  auto* bytes = reinterpret_cast<unsigned char*>(const_cast<ShmData*>(shm));
  bytes[random() % sizeof(ShmData)] = static_cast<unsigned char>(random());
}

TEST_F(KeptTablesTest, WhatIsKeptIsWhatTheCommandPrintsWhateverHasChanged) {
  std::mt19937 random(20261122);
  int known = 0;
  for (int i = 0; i < 100; ++i) {
    for (const char* line : kTables) {
      const std::vector<std::string> words = ctl::wordsOf(line);
      if (const auto kept = api::keptTable(words)) {
        EXPECT_EQ(api::run(session(), words).text, kept->text) << line;
        ++known;
      }
    }
    api::runAndKeep(session(), ctl::wordsOf(kTables[static_cast<size_t>(i) % std::size(kTables)]));
    spoil(random);
  }
  EXPECT_GT(known, 20);
}

TEST_F(KeptTablesTest, EveryFieldOfASettingIsSeen) {
  const std::vector<std::string> words = {"show"};
  for (uint32_t* field : {&shm->config.wanLinkRate, &shm->operationalState, &shm->pendingChanges}) {
    api::runAndKeep(session(), words);
    ASSERT_TRUE(api::keptTable(words));
    *field ^= 1;
    EXPECT_FALSE(api::keptTable(words));
  }
}

TEST_F(KeptTablesTest, LookAtCountersIsKnownUntilAnythingInTheStoreChanges) {
  const std::vector<std::string> words = {"stats"};
  const auto known = [&] { return api::keptTable(words, api::MadeOf::kMore).has_value(); };
  const auto knownToWhoLooks = [&] {  // again where the machine was busy elsewhere for a second
    for (int i = 0; i < 60; ++i) {
      api::runAndKeep(session(), words, api::MadeOf::kMore);
      if (known()) return true;
    }
    return false;
  };
  for (void* place : {static_cast<void*>(&shm->statistics), static_cast<void*>(&shm->eventLog.record[7]),
                      static_cast<void*>(&shm->config.wanLinkRate)}) {
    EXPECT_TRUE(knownToWhoLooks());
    *static_cast<uint8_t*>(place) ^= 1;
    EXPECT_FALSE(known());
  }
  EXPECT_TRUE(knownToWhoLooks());
  usleep(1100000);
  EXPECT_FALSE(known()) << "uptime goes on without the store";
}

TEST_F(KeptTablesTest, WhoKnowsAllItemsKnowsEachOfThem) {
  ASSERT_EQ(0, setShmString(SHM_TEXT_SYS_NAME, "K\xc3\xa4lte \"7\" \\ \xff"));
  api::runAndKeep(session(), {"show"});
  for (const ctl::ItemRow& row : ctl::itemRows()) {
    const auto kept = api::keptTable({"show", row.name});
    ASSERT_TRUE(kept) << row.name;
    EXPECT_EQ(api::run(session(), {"show", row.name}).text, kept->text);
  }
}

TEST_F(KeptTablesTest, TooLongTableIsKnownToHaveBeenPrintedUntilTheStoreChanges) {
  const std::vector<std::string> words = ctl::wordsOf("rule list");
  shm->filterTable.ruleCount = SHM_RULES;
  EXPECT_FALSE(api::printedSince(words));
  ASSERT_GT(api::runAndKeep(session(), words).text.size(), 256u * 1024);
  EXPECT_FALSE(api::keptTable(words));
  EXPECT_TRUE(api::printedSince(words));
  shm->config.wanLinkRate ^= 1;
  EXPECT_FALSE(api::printedSince(words));
}

TEST_F(KeptTablesTest, WhoHoldsTheStoreHoldsUpNobodyWhoKnowsItAlready) {
  const Browser alice = browserOf("alice");
  const api::Reply first = ask(alice, "GET", "/items");
  ASSERT_EQ(200, first.status);
  Peer holder([](const Peer::Line& line) {
    kestrove_hold();
    line.say('h');
    line.hear();
    shm->config.wanLinkRate ^= 1;
    line.say('c');
    line.hear();
    return 0;
  });
  ASSERT_EQ('h', holder.line().hear());
  const api::Reply again = ask(alice, "GET", "/items");
  EXPECT_EQ(200, again.status);
  EXPECT_EQ(first.header("ETag"), again.header("ETag"));
  EXPECT_EQ(first.body, again.body);
  holder.line().say('g');
  ASSERT_EQ('c', holder.line().hear());
  EXPECT_EQ(503, ask(alice, "GET", "/items").status) << "it is another one now, and not whole yet";
  holder.kill();
}

}  // namespace
}  // namespace kestrove::testing
