// SPDX-License-Identifier: Apache-2.0
// The rule table against a list that is edited the plain way.

#include <gmock/gmock.h>

#include <random>

#include "tests/net/policy/rules_fixture.h"

namespace kestrove::testing {
namespace {

// Results: 0 or the code of the refusal.
class Model {
 public:
  std::vector<int32_t> names = {0};

  int insert(int position, int32_t name) {
    if (!holds(position)) return SHM_EINVAL;
    if (names.size() == SHM_RULES) return SHM_EFULL;
    names.insert(names.begin() + position, name);
    return 0;
  }
  int move(int from, int to) {
    if (!holds(from) || !holds(to)) return SHM_EINVAL;
    if (isLast(from)) return SHM_EREADONLY;
    int32_t name = names[static_cast<size_t>(from)];
    names.insert(names.begin() + to, name);
    names.erase(names.begin() + (from < to ? from : from + 1));
    return 0;
  }
  int change(int position, int32_t name) {
    if (!holds(position)) return SHM_EINVAL;
    if (isLast(position)) return SHM_EREADONLY;
    names[static_cast<size_t>(position)] = name;
    return 0;
  }
  int erase(int position) {
    if (!holds(position)) return SHM_EINVAL;
    if (isLast(position)) return SHM_EREADONLY;
    names.erase(names.begin() + position);
    return 0;
  }

 private:
  int size() const { return static_cast<int>(names.size()); }
  bool holds(int position) const { return position >= 0 && position < size(); }
  bool isLast(int position) const { return position == size() - 1; }
};

class RulesModelTest : public RulesTest {
 protected:
  void SetUp() override {
    RulesTest::SetUp();
    shm->filterTable.rule[0].srcPort = 0;
    shm->operationalState = SHM_STATE_CONFIGURATION;
  }

  int someWhere() {
    int size = static_cast<int>(model.names.size());
    return std::uniform_int_distribution<int>(-1, size)(random);
  }

  // One random operation on both sides; the results must agree.
  void step(unsigned growth) {
    FilterRule rule = ruleNamed(++lastName);
    shm_errno = 0;
    int result, expected, position = someWhere();
    switch (std::uniform_int_distribution<unsigned>(0, 2 + growth)(random)) {
      case 0: result = deleteRule(position), expected = model.erase(position); break;
      case 1: result = changeRule(position, &rule), expected = model.change(position, lastName); break;
      case 2: {
        int to = someWhere();
        result = moveRule(position, to), expected = model.move(position, to);
        break;
      }
      default: result = insertRule(position, &rule), expected = model.insert(position, lastName);
    }
    ASSERT_EQ(expected == 0 ? 0 : -1, result);
    ASSERT_EQ(static_cast<uint32_t>(expected), shm_errno);
  }

  Model model;
  std::mt19937 random{20240607};
  int32_t lastName = 0;
};

TEST_F(RulesModelTest, HundredThousandOperations) {
  for (int i = 0; i < 100000; ++i) {
    ASSERT_NO_FATAL_FAILURE(step(i % 20000 < 12000 ? 2 : 0)) << i;
    if (i % 500 == 0) {
      ASSERT_EQ(model.names, names()) << i;
    }
  }
  EXPECT_EQ(model.names, names());
  EXPECT_EQ(0, shm_lock_count);
}

}  // namespace
}  // namespace kestrove::testing
