// SPDX-License-Identifier: Apache-2.0
// Rules told apart by their source port, and what became of a change.
#pragma once

#include <string.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "kestrove/kestrove.h"
#include "tests/support/engine.h"
#include "tests/support/files.h"
#include "tests/support/records.h"
#include "tests/support/store.h"

namespace kestrove::testing {

inline FilterRule ruleNamed(int32_t name) {
  FilterRule rule = tcpRule();
  rule.srcPort = rule.srcPortEnd = name;
  rule.bandwidth = 50000;
  return rule;
}

class RulesTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    unlink(kConfigFile);
  }

  // Rules with the names, in that order, in front of the default rule.
  void fillWith(const std::vector<int32_t>& names) {
    int32_t count = 0;
    for (int32_t name : names) shm->filterTable.rule[count++] = ruleNamed(name);
    FilterRule last = ruleNamed(0);
    last.proto = 0;
    shm->filterTable.rule[count++] = last;
    shm->filterTable.ruleCount = count;
  }

  static std::vector<int32_t> names() {
    std::vector<int32_t> found;
    for (int32_t i = 0; i < shm->filterTable.ruleCount; ++i) found.push_back(shm->filterTable.rule[i].srcPort);
    return found;
  }

  // Whether the store was saved since the last question.
  static bool saved() { return unlink(kConfigFile) == 0; }
  static bool marked() { return (__atomic_exchange_n(&shm->pendingChanges, 0u, __ATOMIC_SEQ_CST) & 0x80) != 0; }
};

}  // namespace kestrove::testing
