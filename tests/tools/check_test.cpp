// The checker on stores that are sound, damaged in one place, or noise.
#include "tools/ctl/check.h"

#include <gtest/gtest.h>
#include <string.h>

#include <memory>
#include <random>

#include "tests/support/store.h"
#include "tools/ctl/trace.h"

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

TEST(Trace, TellsShellLinesOnceAndLeavesOutWhatTheyStart) {
  std::vector<ctl::Effect> effects = ctl::effectsOf(
      "10 execve(\"/x/kestrovectl\", [\"kestrovectl\", \"set\"], 0x1 /* 3 vars */) = 0\n"
      "10 ioctl(5, SIOCGIFINDEX, {ifr_name=\"br0\"}) = 0\n"
      "11 execve(\"/bin/sh\", [\"sh\", \"-c\", \"/sbin/ip rule flush > /dev/null 2>&1 \"], 0x1 /* 3 vars */) = 0\n"
      "12 execve(\"/sbin/ip\", [\"/sbin/ip\", \"rule\", \"flush\"], 0x1) = 0\n"
      "12 +++ exited with 0 +++\n"
      "11 +++ exited with 0 +++\n"
      "10 ioctl(5, SIOCSIFADDR, {ifr_name=\"eth0\"}) = 0\n"
      "13 execve(\"/sbin/iptables\", [\"/sbin/iptables\", \"-F\"], 0x1) = 0\n"
      "10 sendmsg(6, {msg_name={sa_family=AF_NETLINK}}, 0) = 64\n"
      "10 kill(77, SIGUSR1) = 0\n");
  ASSERT_EQ(5u, effects.size());
  EXPECT_EQ("shell", effects[0].kind);
  EXPECT_EQ("/sbin/ip rule flush > /dev/null 2>&1 ", effects[0].text);
  EXPECT_EQ("ioctl", effects[1].kind);
  EXPECT_EQ("program", effects[2].kind);
  EXPECT_EQ("\"/sbin/iptables\", \"-F\"", effects[2].text);
  EXPECT_EQ("netlink", effects[3].kind);
  EXPECT_EQ("signal", effects[4].kind);
}

}  // namespace
}  // namespace kestrove::testing
