// SPDX-License-Identifier: Apache-2.0
// Editing the rule table: positions, order, refusals, the change tail.

#include <gmock/gmock.h>
#include <sys/shm.h>

#include <functional>

#include "tests/net/policy/rules_fixture.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;

TEST_F(RulesTest, FreshTableHoldsTheDefaultRuleAlone) {
  FilterRule rule = ruleNamed(1);
  EXPECT_EQ(1, getRuleCount());
  EXPECT_FAILS_WITH(SHM_EREADONLY, deleteRule(0));
  EXPECT_FAILS_WITH(SHM_EREADONLY, changeRule(0, &rule));
  EXPECT_FAILS_WITH(SHM_EREADONLY, moveRule(0, 0));
  EXPECT_FAILS_WITH(SHM_EINVAL, insertRule(1, &rule));
  EXPECT_EQ(0, insertRule(0, &rule));
  EXPECT_THAT(names(), ElementsAre(1, 0));
}

TEST_F(RulesTest, InsertMovesTheRestBack) {
  fillWith({1, 2, 3});
  FilterRule rule = ruleNamed(9);
  EXPECT_EQ(0, insertRule(1, &rule));
  EXPECT_THAT(names(), ElementsAre(1, 9, 2, 3, 0));
  rule = ruleNamed(8);
  EXPECT_EQ(0, insertRule(4, &rule));
  EXPECT_THAT(names(), ElementsAre(1, 9, 2, 3, 8, 0));
}

TEST_F(RulesTest, AddIsInsertWithTwoArgumentsMore) {
  fillWith({1, 2});
  FilterRule rule = ruleNamed(9);
  EXPECT_EQ(0, addRule(0, &rule, -7, 1 << 30));
  EXPECT_THAT(names(), ElementsAre(9, 1, 2, 0));
  EXPECT_FAILS_WITH(SHM_EINVAL, addRule(4, &rule, 0, 0));
}

TEST_F(RulesTest, InsertedCopyHasOrderZeroAndTheCallersStays) {
  FilterRule rule = ruleNamed(9);
  rule.order = 17;
  EXPECT_EQ(0, insertRule(0, &rule));
  EXPECT_EQ(0u, shm->filterTable.rule[0].order);
  EXPECT_EQ(17u, rule.order);
}

TEST_F(RulesTest, InsertOfARecordOfTheTableItself) {
  fillWith({1, 2, 3});
  EXPECT_EQ(0, insertRule(0, &shm->filterTable.rule[1]));
  EXPECT_THAT(names(), ElementsAre(2, 1, 2, 3, 0));
}

TEST_F(RulesTest, InsertIntoAFullTable) {
  fillWith(std::vector<int32_t>(SHM_RULES - 2, 5));
  FilterRule rule = ruleNamed(9);
  EXPECT_EQ(0, insertRule(8190, &rule));
  EXPECT_EQ(SHM_RULES, getRuleCount());
  EXPECT_EQ(9, shm->filterTable.rule[8190].srcPort);
  EXPECT_EQ(0, shm->filterTable.rule[8191].srcPort);
  EXPECT_FAILS_WITH(SHM_EFULL, insertRule(0, &rule));
  EXPECT_EQ(SHM_RULES, getRuleCount());
  EXPECT_EQ(5, shm->filterTable.rule[0].srcPort);
}

struct MoveRow {
  int from, to;
  std::vector<int32_t> after;
};

TEST_F(RulesTest, MoveLandsInFrontOfTheRuleAtTheTarget) {
  const MoveRow rows[] = {
      {0, 2, {2, 1, 3, 0}}, {2, 0, {3, 1, 2, 0}}, {0, 1, {1, 2, 3, 0}}, {0, 3, {2, 3, 1, 0}},
      {1, 1, {1, 2, 3, 0}}, {2, 3, {1, 2, 3, 0}}, {1, 3, {1, 3, 2, 0}}, {2, 1, {1, 3, 2, 0}},
  };
  for (const MoveRow& row : rows) {
    fillWith({1, 2, 3});
    EXPECT_EQ(0, moveRule(row.from, row.to));
    EXPECT_EQ(row.after, names()) << row.from << " to " << row.to;
  }
}

TEST_F(RulesTest, MoveRuleToItsOwnPlaceSavesNothing) {
  EngineChild engine;
  fillWith({1, 2, 3});
  for (int to : {1, 2}) {
    EXPECT_EQ(0, moveRule(1, to));
    EXPECT_FALSE(saved());
    EXPECT_FALSE(marked());
    EXPECT_FALSE(engine.signalled());
  }
}

TEST_F(RulesTest, MoveNeverTakesTheDefaultRule) {
  fillWith({1, 2});
  for (int to : {0, 1, 2}) EXPECT_FAILS_WITH(SHM_EREADONLY, moveRule(2, to));
  EXPECT_THAT(names(), ElementsAre(1, 2, 0));
}

TEST_F(RulesTest, ChangeReplacesTheRecordWithItsOrder) {
  fillWith({1, 2});
  FilterRule rule = ruleNamed(9);
  rule.order = 77;
  rule.priority = -3;
  EXPECT_EQ(0, changeRule(1, &rule));
  EXPECT_EQ(0, memcmp(&rule, &shm->filterTable.rule[1], sizeof rule));
  EXPECT_THAT(names(), ElementsAre(1, 9, 0));
  EXPECT_FAILS_WITH(SHM_EREADONLY, changeRule(2, &rule));
}

TEST_F(RulesTest, DeleteMovesTheRestForward) {
  fillWith({1, 2, 3});
  EXPECT_EQ(0, deleteRule(0));
  EXPECT_THAT(names(), ElementsAre(2, 3, 0));
  EXPECT_EQ(0, deleteRule(1));
  EXPECT_THAT(names(), ElementsAre(2, 0));
  EXPECT_FAILS_WITH(SHM_EREADONLY, deleteRule(1));
}

TEST_F(RulesTest, GetCopiesEveryRuleTheDefaultOneToo) {
  fillWith({1, 2});
  FilterRule out;
  for (int i : {0, 1, 2}) {
    memset(&out, 0xEE, sizeof out);
    EXPECT_EQ(0, getRuleTableEntry(i, &out));
    EXPECT_EQ(0, memcmp(&out, &shm->filterTable.rule[i], sizeof out));
  }
}

TEST_F(RulesTest, PositionsOutsideTheTable) {
  fillWith({1, 2});
  FilterRule rule = ruleNamed(9), out = ruleNamed(4);
  for (int position : {-1, 3, 8191, 8192, INT32_MAX, INT32_MIN}) {
    EXPECT_FAILS_WITH(SHM_EINVAL, insertRule(position, &rule));
    EXPECT_FAILS_WITH(SHM_EINVAL, changeRule(position, &rule));
    EXPECT_FAILS_WITH(SHM_EINVAL, deleteRule(position));
    EXPECT_FAILS_WITH(SHM_EINVAL, moveRule(position, 0));
    EXPECT_FAILS_WITH(SHM_EINVAL, moveRule(0, position));
    EXPECT_FAILS_WITH(SHM_EINVAL, moveRule(2, position));  // the range comes before the default rule
    EXPECT_FAILS_WITH(SHM_EINVAL, getRuleTableEntry(position, &out));
  }
  EXPECT_EQ(4, out.srcPort);
  EXPECT_THAT(names(), ElementsAre(1, 2, 0));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(RulesTest, NoRecordIsAnInvalidArgument) {
  EXPECT_FAILS_WITH(SHM_EINVAL, insertRule(0, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, addRule(0, nullptr, 0, 0));
  EXPECT_FAILS_WITH(SHM_EINVAL, changeRule(0, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getRuleTableEntry(0, nullptr));
  EXPECT_EQ(1, getRuleCount());
}

struct TailRow {
  uint32_t state;
  bool saves, marks, signals;
};
constexpr TailRow kTails[] = {
    {SHM_STATE_UNINITIALIZED, true, true, true},    {SHM_STATE_OPERATIONAL, true, true, true},
    {SHM_STATE_DISABLED, true, true, true},         {SHM_STATE_UNCONFIGURED, true, true, true},
    {SHM_STATE_CONFIGURATION, false, false, false}, {SHM_STATE_DEBUG, true, false, false}};

TEST_F(RulesTest, ChangeTailInEveryState) {
  EngineChild engine;
  FilterRule rule = ruleNamed(9);
  const std::function<int()> edits[] = {[&] { return insertRule(0, &rule); }, [&] { return addRule(0, &rule, 0, 0); },
                                        [&] { return moveRule(0, 2); }, [&] { return changeRule(0, &rule); },
                                        [&] { return deleteRule(0); }};
  for (const TailRow& row : kTails) {
    for (const auto& edit : edits) {
      fillWith({1, 2});
      shm->operationalState = row.state;
      EXPECT_EQ(0, edit());
      EXPECT_EQ(row.saves, saved()) << row.state;
      EXPECT_EQ(row.marks, marked()) << row.state;
      EXPECT_EQ(row.signals, engine.signalled()) << row.state;
      EXPECT_EQ(0, shm_lock_count);
    }
  }
}

TEST_F(RulesTest, SaveRuleTableIsTheTailAlone) {
  EngineChild engine;
  for (const TailRow& row : kTails) {
    shm->operationalState = row.state;
    shm_errno = 99;
    EXPECT_EQ(row.state == SHM_STATE_CONFIGURATION ? -1 : 0, saveRuleTable());
    EXPECT_EQ(99u, shm_errno);
    EXPECT_EQ(row.saves, saved()) << row.state;
    EXPECT_EQ(row.marks, marked()) << row.state;
    EXPECT_EQ(row.signals, engine.signalled()) << row.state;
  }
}

TEST_F(RulesTest, SaveRuleTableAttachesWithoutTheLock) {
  ShmData* attached = shm;
  shm = nullptr;
  EXPECT_EQ(0, saveRuleTable());
  EXPECT_NE(nullptr, shm);
  shmdt(shm);
  shm = attached;
}

TEST_F(RulesTest, FailedSaveAndMissingEngineDoNotFailTheEdit) {
  strcpy(shm->config.configFileName, "/no/such/folder/file");
  FilterRule rule = ruleNamed(9);
  EXPECT_EQ(0, insertRule(0, &rule));
  EXPECT_TRUE(marked());
}

TEST_F(RulesTest, SignalThatCannotBeSentKeepsALevelOfTheLock) {
  shm->taskPids[4] = INT32_MAX;
  FilterRule rule = ruleNamed(9);
  EXPECT_EQ(0, insertRule(0, &rule));
  EXPECT_TRUE(marked());
  EXPECT_EQ(1, shm_lock_count);
}

TEST_F(RulesTest, WithoutAStore) {
  dropStore();
  FilterRule rule = ruleNamed(9);
  EXPECT_FAILS_WITH(SHM_EATTACH, insertRule(0, &rule));
  EXPECT_FAILS_WITH(SHM_EATTACH, addRule(0, &rule, 0, 0));
  EXPECT_FAILS_WITH(SHM_EATTACH, moveRule(0, 1));
  EXPECT_FAILS_WITH(SHM_EATTACH, changeRule(0, &rule));
  EXPECT_FAILS_WITH(SHM_EATTACH, deleteRule(0));
  EXPECT_FAILS_WITH(SHM_EATTACH, getRuleTableEntry(0, &rule));
  EXPECT_FAILS_WITH(SHM_EATTACH, saveRuleTable());
  EXPECT_FAILS_WITH(SHM_EINVAL, getRuleCount());  // the code of the unlock
}

TEST_F(RulesTest, LockHeldByTheCallerStaysHeld) {
  fillWith({1});
  ASSERT_EQ(0, shm_lock());
  FilterRule rule = ruleNamed(9);
  EXPECT_EQ(2, getRuleCount());
  EXPECT_EQ(0, insertRule(0, &rule));
  EXPECT_EQ(1, shm_lock_count);
  shm_unlock();
}

TEST_F(RulesTest, DamagedCountIsBounded) {
  fillWith(std::vector<int32_t>(SHM_RULES - 1, 5));
  FilterRule rule = ruleNamed(9), out;
  const EventLog before = shm->eventLog;
  for (int32_t damaged : {8193, 10000, INT32_MAX}) {
    shm->filterTable.ruleCount = damaged;
    EXPECT_EQ(damaged, getRuleCount());
    EXPECT_FAILS_WITH(SHM_EFULL, insertRule(0, &rule));
    EXPECT_FAILS_WITH(SHM_EINVAL, getRuleTableEntry(8192, &out));
    EXPECT_EQ(0, getRuleTableEntry(8191, &out));
    EXPECT_FAILS_WITH(SHM_EREADONLY, deleteRule(8191));
    EXPECT_EQ(0, moveRule(0, 8191));
    EXPECT_EQ(0, deleteRule(0));
    EXPECT_EQ(8191, getRuleCount());
    EXPECT_EQ(0, insertRule(0, &rule));
  }
  for (int32_t damaged : {0, -1, INT32_MIN}) {
    shm->filterTable.ruleCount = damaged;
    EXPECT_EQ(damaged, getRuleCount());
    EXPECT_FAILS_WITH(SHM_EINVAL, insertRule(0, &rule));
    EXPECT_FAILS_WITH(SHM_EINVAL, changeRule(0, &rule));
    EXPECT_FAILS_WITH(SHM_EINVAL, moveRule(0, 0));
    EXPECT_FAILS_WITH(SHM_EINVAL, deleteRule(0));
    EXPECT_FAILS_WITH(SHM_EINVAL, getRuleTableEntry(0, &out));
  }
  EXPECT_EQ(0, memcmp(&before, &shm->eventLog, sizeof before)) << "no byte behind the table";
}

}  // namespace
}  // namespace kestrove::testing
