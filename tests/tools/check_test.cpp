// SPDX-License-Identifier: Apache-2.0
// The checker on stores that are sound, damaged in one place, or noise.
#include "tools/ctl/check.h"

#include <gtest/gtest.h>
#include <string.h>

#include <memory>
#include <random>

#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

class CheckTest : public StoreTest {
 protected:
  std::string onlyFinding() {
    std::vector<ctl::Finding> findings = ctl::checkStore(*shm);
    EXPECT_EQ(1u, findings.size());
    return findings.empty() ? "" : findings[0].table + ": " + findings[0].text;
  }
  void addRoutes(uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
      shm->routes.slot[i] = {1000 - i, 0xFFFFFFFF, 1, 1, 1, i + 1 < count ? i + 1 : SHM_NO_SLOT};
    }
  }
};

TEST_F(CheckTest, AFreshStoreIsSound) { EXPECT_TRUE(ctl::checkStore(*shm).empty()); }

TEST_F(CheckTest, CountsBeyondTheirTables) {
  shm->config.userCount = 6;
  shm->config.adminUserCount = 0;
  std::vector<ctl::Finding> findings = ctl::checkStore(*shm);
  ASSERT_FALSE(findings.empty());
  EXPECT_EQ("count 6 is not 0 to 5", findings[0].text);
}

TEST_F(CheckTest, RuleCountOfZero) {
  shm->filterTable.ruleCount = 0;
  EXPECT_EQ("rule: count 0 is not 1 to 8192", onlyFinding());
}

TEST_F(CheckTest, AdministratorsThatDoNotAddUp) {
  shm->config.adminUserCount = 1;
  EXPECT_EQ("user: adminUserCount 1, but 0 administrators", onlyFinding());
}

TEST_F(CheckTest, ARouteChainThatLoops) {
  addRoutes(3);
  shm->routes.slot[2].next = 1;
  EXPECT_EQ("route: chain comes back to slot 1", onlyFinding());
}

TEST_F(CheckTest, ARouteChainThatComesBackToItsHead) {
  addRoutes(2);
  shm->routes.slot[1].next = 0;
  EXPECT_EQ("route: chain comes back to its head", onlyFinding());
}

TEST_F(CheckTest, ARouteThatNoChainReaches) {
  addRoutes(3);
  shm->routes.slot[0].next = SHM_NO_SLOT;
  EXPECT_EQ("route: 3 slots in use, 1 reached from the head", onlyFinding());
}

TEST_F(CheckTest, RoutesOutOfOrder) {
  addRoutes(2);
  shm->routes.slot[1].destination = 2000;
  EXPECT_EQ("route: slot 1 stands out of order", onlyFinding());
}

TEST_F(CheckTest, AChainBeyondTheTable) {
  addRoutes(1);
  shm->routes.slot[0].next = 1024;
  EXPECT_EQ("route: chain leads to slot 1024, beyond the table", onlyFinding());
}

TEST_F(CheckTest, AnEmptiedIpv6ListIsSound) {
  shm->routes6.head6 = SHM_NO_SLOT;
  EXPECT_TRUE(ctl::checkStore(*shm).empty());
}

TEST_F(CheckTest, RingIndexesBeyondTheRing) {
  shm->eventLog.writeIndex = 8192;
  EXPECT_EQ("event: writeIndex 8192 is beyond the ring", onlyFinding());
}

TEST_F(CheckTest, AcceleratedUdp) {
  shm->filterTable.rule[0].proto = 17;
  EXPECT_EQ("rule: rule 0: UDP accelerated", onlyFinding());
}

TEST_F(CheckTest, NoiseIsFoundAndNothingIsChanged) {
  std::mt19937 random(7);
  for (int round = 0; round < 20; ++round) {
    auto* word = reinterpret_cast<uint32_t*>(shm);
    for (size_t i = 0; i < SHM_SIZE / sizeof *word; ++i) word[i] = static_cast<uint32_t>(random());
    auto before = std::make_unique<ShmData>();
    memcpy(before.get(), shm, SHM_SIZE);
    EXPECT_FALSE(ctl::checkStore(*shm).empty());
    EXPECT_EQ(0, memcmp(before.get(), shm, SHM_SIZE));
  }
}

}  // namespace
}  // namespace kestrove::testing
