// SPDX-License-Identifier: Apache-2.0
// Rules of the table itself, which every program can reach, as rules of the operations.
#include "tests/net/policy/rules_fixture.h"
#include "tests/support/store_copy.h"

namespace kestrove::testing {
namespace {

class RulePointers : public RulesTest {
 protected:
  void SetUp() override {
    RulesTest::SetUp();
    shm->operationalState = SHM_STATE_DEBUG;  // all but the signal
    fillWith({1, 2, 3, 4});
  }
};

constexpr int kRules = 5;
constexpr int kPlaces = 6;  // one behind them, too

TEST_F(RulePointers, RuleOfTheTableIsInsertedAsItWas) {
  for (int place = -1; place < kPlaces; ++place) {
    for (int given = 0; given < kPlaces; ++given) {
      SCOPED_TRACE(place);
      FilterRule* rule = &shm->filterTable.rule[given];
      expectSameAsACopy<FilterRule>(rule, [=](FilterRule* own) { return insertRule(place, own); });
      fillWith({1, 2, 3, 4});
      expectSameAsACopy<FilterRule>(rule, [=](FilterRule* own) { return addRule(place, own, 0, 0); });
      fillWith({1, 2, 3, 4});
    }
  }
}

TEST_F(RulePointers, RuleOfTheTableTakesTheOthersPlace) {
  for (int place = -1; place < kPlaces; ++place) {
    for (int given = 0; given < kRules; ++given) {
      SCOPED_TRACE(place);
      FilterRule* rule = &shm->filterTable.rule[given];
      expectSameAsACopy<FilterRule>(rule, [=](FilterRule* own) { return changeRule(place, own); });
      fillWith({1, 2, 3, 4});
    }
  }
}

TEST_F(RulePointers, RuleGivenIntoTheTable) {
  EXPECT_EQ(0, getRuleTableEntry(1, &shm->filterTable.rule[3]));
  EXPECT_EQ((std::vector<int32_t>{1, 2, 3, 2, 0}), names());
}

}  // namespace
}  // namespace kestrove::testing
