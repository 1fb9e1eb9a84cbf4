// SPDX-License-Identifier: Apache-2.0
// A process that dies between any two instructions of a change of rules, users or addresses.
#include <string.h>

#include "lifecycle/fresh.h"
#include "store/journal.h"
#include "store/rule_slots.h"
#include "tests/store/death_fixture.h"
#include "tests/support/files.h"
#include "tests/support/kernel.h"

namespace kestrove::testing {
namespace {

using DeathInRulesTest = DeathTest;
using DeathInUsersTest = DeathTest;
using DeathInTextsTest = DeathTest;

class DeathInAddressesTest : public DeathTest {
 protected:
  // Removing and changing touch it in Configuration Mode, too.
  static void makeBridge() {
    run("brctl addbr br0");
    run("echo 0 > /proc/sys/net/ipv6/conf/br0/accept_dad");
    for (int i = 0; i < shm->ip6Count; ++i) {
      const Ip6Address& entry = shm->ip6Address[i];
      ASSERT_EQ(0, shm_if6config("br0", entry.address, entry.prefixLength, 0));
    }
  }
};

// The last rules of a full table: three, and the default rule.
Stretch lastRules() { return stretchOf(&shm->filterTable.rule[SHM_RULES - 8], 8); }

void fillRules(int count) {
  FilterRule last = shm->filterTable.rule[3];
  for (int i = 0; i < count - 1; ++i) shm->filterTable.rule[i] = ruleNamed(i);
  shm->filterTable.rule[count - 1] = last;
  shm->filterTable.ruleCount = count;
}

TEST_F(DeathInRulesTest, InsertingAtTheFront) {
  FilterRule rule = ruleNamed(9);
  Proof proof = expectSound([&] { return insertRule(0, &rule); });
  EXPECT_GT(proof.takenBack, 0);
  EXPECT_GT(proof.finished, 0);
}

TEST_F(DeathInRulesTest, AddingBeforeTheDefaultRule) {
  FilterRule rule = ruleNamed(9);
  expectSound([&] { return addRule(3, &rule, 0, 0); });
}

TEST_F(DeathInRulesTest, InsertingARecordOfTheTableItself) {
  expectSound([] { return insertRule(1, &shm->filterTable.rule[1]); });
}

TEST_F(DeathInRulesTest, DeletingEachRule) {
  for (int position = 0; position < 3; ++position) expectSound([] { return deleteRule(0); });
  EXPECT_EQ(1, shm->filterTable.ruleCount);
}

TEST_F(DeathInRulesTest, DeletingTheRuleBeforeTheDefaultRule) {
  Proof proof = expectSound([] { return deleteRule(2); });
  EXPECT_GT(proof.finished, 0);
}

TEST_F(DeathInRulesTest, MovingToTheFront) {
  Proof proof = expectSound([] { return moveRule(2, 0); });
  EXPECT_GT(proof.finished, 0);
}

TEST_F(DeathInRulesTest, MovingBeforeTheDefaultRule) {
  expectSound([] { return moveRule(0, 3); });
}

TEST_F(DeathInRulesTest, Changing) {
  FilterRule rule = ruleNamed(9);
  expectSound([&] { return changeRule(1, &rule); });
}

TEST_F(DeathInRulesTest, MovingInATableWithOneFreePlace) {
  fillRules(SHM_RULES - 1);
  expectSound([] { return moveRule(SHM_RULES - 4, SHM_RULES - 7); }, 0, {lastRules()});
}

TEST_F(DeathInRulesTest, FillingTheTable) {
  fillRules(SHM_RULES - 1);
  FilterRule rule = ruleNamed(9);
  expectSound([&] { return insertRule(SHM_RULES - 6, &rule); }, 0, {lastRules()});
  EXPECT_EQ(SHM_RULES, shm->filterTable.ruleCount);
}

TEST_F(DeathInRulesTest, MovingBothWaysInAFullTable) {
  fillRules(SHM_RULES);
  Proof proof = expectSound([] { return moveRule(SHM_RULES - 3, SHM_RULES - 7); }, 0, {lastRules()});
  EXPECT_GT(proof.takenBack, 0);
  EXPECT_GT(proof.finished, 0);
  expectSound([] { return moveRule(SHM_RULES - 7, SHM_RULES - 2); }, 0, {lastRules()});
}

TEST_F(DeathInRulesTest, ChangingInAFullTableOfEitherFamily) {
  fillRules(SHM_RULES);
  for (uint32_t family : {1u, 4u}) {
    shm->filterTable.rule[SHM_RULES - 1] = defaultRule(family, static_cast<int32_t>(shm->config.minRate));
    FilterRule rule = ruleNamed(static_cast<int32_t>(9 + family));
    expectSound([&] { return changeRule(SHM_RULES - 2, &rule); }, 0, {lastRules()});
  }
}

TEST_F(DeathInRulesTest, DeletingInAFullTable) {
  fillRules(SHM_RULES);
  expectSound([] { return deleteRule(SHM_RULES - 5); }, 0, {lastRules()});
}

TEST_F(DeathInRulesTest, AFullTableWithAnotherLastRuleIsChangedAllTheSame) {
  fillRules(SHM_RULES);
  shm->filterTable.rule[SHM_RULES - 1].priority = 7;
  ASSERT_EQ(0, moveRule(SHM_RULES - 3, SHM_RULES - 6));
  const int32_t order[] = {SHM_RULES - 7, SHM_RULES - 3, SHM_RULES - 6, SHM_RULES - 5, SHM_RULES - 4, SHM_RULES - 2};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(order[i], shm->filterTable.rule[SHM_RULES - 7 + i].destPort) << i;
  ASSERT_EQ(0, moveRule(SHM_RULES - 6, SHM_RULES - 2));
  for (int i = 0; i < 6; ++i) EXPECT_EQ(SHM_RULES - 7 + i, shm->filterTable.rule[SHM_RULES - 7 + i].destPort) << i;
  EXPECT_EQ(7, shm->filterTable.rule[SHM_RULES - 1].priority);
}

TEST_F(DeathInRulesTest, APlainShiftIsFound) {
  expectFault(
      [] {
        FilterTable& table = shm->filterTable;
        memmove(&table.rule[1], &table.rule[0], 4 * sizeof table.rule[0]);
        table.rule[0] = ruleNamed(9);
        table.ruleCount = 5;
      },
      "in between");
}

TEST_F(DeathInRulesTest, ACountThatRunsAheadIsFound) {
  expectFault(
      [] {
        FilterTable& table = shm->filterTable;
        ++table.ruleCount;
        keepOrder();
        table.rule[4] = table.rule[3];
        table.rule[3] = ruleNamed(9);
      },
      "in between");
}

TEST_F(DeathInUsersTest, AddingAnAdministrator) {
  UserAccount account = userNamed("newcomer", 1);
  Proof proof = expectSound([&] { return shm_addUser(&account); });
  EXPECT_GT(proof.takenBack, 0);
  EXPECT_GT(proof.finished, 0);
}

TEST_F(DeathInUsersTest, AddingTheLastUserThatFits) {
  shm->config.users[3] = userNamed("delta", 0);
  shm->config.userCount = 4;
  UserAccount account = userNamed("newcomer", 0);
  expectSound([&] { return addUser(&account, nullptr); });
}

TEST_F(DeathInUsersTest, RemovingAnAdministrator) {
  writeFile(kPasswd, "root:x:0:0::/:/bin/sh\nalpha:x:1:1::/:/bin/sh\n");
  expectSound([] { return removeUser("alpha"); }, 1);
  EXPECT_EQ(1, shm->config.adminUserCount);
}

TEST_F(DeathInUsersTest, RemovingFromAFullTable) {
  writeFile(kPasswd, "root:x:0:0::/:/bin/sh\nbravo:x:1:1::/:/bin/sh\n");
  shm->config.users[3] = userNamed("delta", 0);
  shm->config.users[4] = userNamed("echo", 0);
  shm->config.userCount = 5;
  expectSound([] { return removeUser("bravo"); }, 1);
  EXPECT_EQ('\0', shm->config.users[4].username[0]);
}

TEST_F(DeathInUsersTest, AGapThatIsClosedByOneMoveIsFound) {
  expectFault(
      [] {
        ConfigRecord& config = shm->config;
        memmove(&config.users[0], &config.users[1], 2 * sizeof config.users[0]);
        config.users[2] = {};
        config.userCount = 2;
        config.adminUserCount = 1;
      },
      "user:");
}

TEST_F(DeathInUsersTest, CountsThatChangeOneByOneAreFound) {
  expectFault(
      [] {
        shm->config.users[3] = userNamed("delta", 1);
        ++shm->config.userCount;
        keepOrder();
        ++shm->config.adminUserCount;
        keepOrder();
      },
      "administrators");
}

TEST_F(DeathInAddressesTest, AddressesOfTheBridgeComeAndGo) {
  Ip6Address address = addressNamed6(9);
  expectSound([&] { return shm_addIp6(&address); });
  makeBridge();
  for (uint8_t number : Numbers{20, 9, 22}) {
    Ip6Address leaving = addressNamed6(number);
    expectSound([&] { return removeIp6(leaving.address); });
  }
}

TEST_F(DeathInAddressesTest, AddressesOfTheBridgeAreChanged) {
  makeBridge();
  Ip6Address address = addressNamed6(9);
  Proof proof = expectSound([&] { return shm_editIp6Address(1, address.address); });
  EXPECT_GT(proof.finished, 0);
  expectSound([] { return shm_editIp6Prefix(2, 77); });
}

TEST_F(DeathInAddressesTest, AddingManagementAddresses) {
  ManagementAddress address = managementNamed(9);
  expectSound([&] { return addManagementAddr(&address); });
}

TEST_F(DeathInAddressesTest, RemovingManagementAddresses) {
  for (uint8_t number : Numbers{20, 22, 21}) {
    ManagementAddress address = managementNamed(number);
    expectSound([&] { return removeManagementAddr(&address); });
  }
  EXPECT_EQ(0, shm->managementAddressCount);
}

TEST_F(DeathInAddressesTest, AnEntryThatCountsTooEarlyIsFound) {
  expectFault(
      [] {
        ++shm->managementAddressCount;
        keepOrder();
        shm->managementAddress[3] = managementNamed(9);
      },
      "management:");
}

// Sources and names that a death tears are the caller's again at the next call: the tables are what must hold.
TEST_F(DeathInTextsTest, SettingATextLeavesTheTablesAlone) {
  expectSound([] { return setShmString(1, "a name that takes more than one store to write"); });
}

TEST_F(DeathInTextsTest, SettingAnItemLeavesTheTablesAlone) {
  expectSound([] { return setKestroveConfigItem(36, SHM_OFF, 1, "--"); });
}

}  // namespace
}  // namespace kestrove::testing
