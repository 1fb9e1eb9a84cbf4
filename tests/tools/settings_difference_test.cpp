// SPDX-License-Identifier: Apache-2.0
// What makes two stores differ.
#include "tools/ctl/settings/difference.h"

#include <string.h>

#include <random>

#include "tests/support/addresses.h"
#include "tests/support/random_store.h"
#include "tests/support/store.h"
#include "tools/ctl/settings/sequence.h"

namespace kestrove::testing {
namespace {

using ctl::compare;
using ctl::Difference;
using ctl::Image;

class DifferenceTest : public StoreTest {
 protected:
  static void putRule(ShmData& store, int position, int priority) {
    FilterTable& table = store.filterTable;
    memmove(&table.rule[position + 1], &table.rule[position],
            sizeof(FilterRule) * static_cast<size_t>(table.ruleCount - position));
    table.rule[position] = {};
    table.rule[position].ipVersion = SHM_FAMILY_IPV4;
    table.rule[position].priority = priority;
    ++table.ruleCount;
  }
};

TEST_F(DifferenceTest, OfAStoreAndItselfIsEmpty) {
  const Difference none = compare(*shm, *shm);
  EXPECT_TRUE(none.empty());
  EXPECT_EQ("", differenceText(none, true));
  EXPECT_EQ(false, differenceJson(none)["changed"]);
}

TEST_F(DifferenceTest, NamesEachSettingUnderItsSection) {
  Image after(*shm);
  shm->config.lanLinkRate = 1000000;
  after->config.lanLinkRate = 2000000;
  after->config.pbrOperState = SHM_ON;
  shm->config.pbrOperState = 0;
  after->managementAddress[0] = {SHM_FAMILY_IPV4, 1, quad("10.0.0.1"), quad("255.0.0.0"), {}, 0, SHM_IF_LAN};
  after->managementAddressCount = 1;
  EXPECT_EQ(
      "@@ items @@\n"
      "-set lanLinkRate 1000000\n"
      "+set lanLinkRate 2000000\n"
      "@@ interfaces @@\n"
      "+mode pbr on\n"
      "@@ addresses @@\n"
      "+address add 10.0.0.1/8 --interface lan\n",
      differenceText(compare(*shm, *after), false));
}

TEST_F(DifferenceTest, HasColoursWhereTheyAreWanted) {
  Image after(*shm);
  after->config.lanLinkRate = shm->config.lanLinkRate + 1;
  const std::string text = differenceText(compare(*shm, *after), true);
  EXPECT_NE(std::string::npos, text.find("\x1b[32m+set lanLinkRate"));
  EXPECT_NE(std::string::npos, text.find("\x1b[31m-set lanLinkRate"));
}

TEST_F(DifferenceTest, OfOneRuleInsertedInAFullTableIsOneChange) {
  for (int i = 0; i < SHM_RULES - 2; ++i) putRule(*shm, i, i % 50);
  Image after(*shm);
  putRule(*after, 4000, 12345);
  const Difference one = compare(*shm, *after);
  ASSERT_EQ(1u, one.changes.size());
  EXPECT_EQ("4000", one.changes[0].key);
  EXPECT_FALSE(one.changes[0].before);
  const Difference back = compare(*after, *shm);
  ASSERT_EQ(1u, back.changes.size());
  EXPECT_FALSE(back.changes[0].after);
}

TEST_F(DifferenceTest, OfARuleThatChangedTellsBothLines) {
  for (int i = 0; i < 5; ++i) putRule(*shm, i, i + 20);
  Image after(*shm);
  after->filterTable.rule[2].priority = 99;
  const ctl::Json json = differenceJson(compare(*shm, *after));
  ASSERT_EQ(1u, json["changes"].size());
  EXPECT_EQ("rules", json["changes"][0]["section"]);
  EXPECT_EQ("2", json["changes"][0]["key"]);
  EXPECT_EQ("rule add last --match-all --priority 22 --kbps 0 --target drop --accel 0 --status undefined --as-is",
            json["changes"][0]["before"]);
}

TEST_F(DifferenceTest, WithLoginsAndRoutesThatTheKernelRefusedIsEmpty) {
  shm->config.userCount = 1;
  strcpy(shm->config.users[0].username, "operator");
  shm->routes.slot[0] = {quad("10.0.0.0"), quad("255.0.0.0"), quad("1.2.3.4"), SHM_ROUTE_ACTIVE, 1, SHM_NO_SLOT};
  Image after(*shm);
  after->config.users[0].lastLoginSeconds = 7;
  after->routes.slot[0].status = SHM_ROUTE_INACTIVE;
  EXPECT_TRUE(compare(*shm, *after).empty());
}

// Records are compared where there are many; their lines would say the same.
TEST_F(DifferenceTest, OfRecordsIsThatOfTheirLines) {
  for (unsigned seed = 0; seed < 20; ++seed) {
    drawStore(seed + 100);
    const Image other(*shm);
    drawStore(seed);
    Image near(*shm);
    near->filterTable.rule[0].priority += 1;
    near->routes.slot[near->routes.head].gateway += 1;
    const Image* const all[] = {&other, &near};
    for (const Image* after : all) {
      EXPECT_EQ(differenceJson(compare(ctl::settingLines(*shm), ctl::settingLines(**after))),
                differenceJson(compare(*shm, **after)));
    }
  }
}

// The gaps taken out and put in make the second sequence of the first.
std::vector<std::string_view> patched(const std::vector<std::string_view>& before,
                                      const std::vector<std::string_view>& after) {
  std::vector<std::string_view> made;
  size_t at = 0;
  for (const ctl::Gap& gap : ctl::gapsBetween(before, after)) {
    while (at < gap.before) made.push_back(before[at++]);
    at += gap.removed;
    for (size_t i = 0; i < gap.added; ++i) made.push_back(after[gap.after + i]);
  }
  while (at < before.size()) made.push_back(before[at++]);
  return made;
}

TEST(Sequence, OfAnythingIsMadeByItsGaps) {
  constexpr std::string_view kLetters[] = {"a", "b", "c", "d"};
  std::mt19937 random(1);
  for (int round = 0; round < 500; ++round) {
    std::vector<std::string_view> before, after;
    for (auto* texts : {&before, &after}) {
      for (auto length = random() % 20; length > 0; --length) texts->push_back(kLetters[random() % 4]);
    }
    EXPECT_EQ(after, patched(before, after));
  }
}

TEST(Sequence, OfThousandsOfEqualTextsIsFoundAllTheSame) {
  const std::vector<std::string_view> before(8000, "x");
  std::vector<std::string_view> after(8000, "x");
  after[10] = "y";
  after[7000] = "z";
  EXPECT_EQ(after, patched(before, after));
}

}  // namespace
}  // namespace kestrove::testing
