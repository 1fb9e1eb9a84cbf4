// SPDX-License-Identifier: Apache-2.0
// Sections of the command script as text.
#pragma once

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <string>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/memory_stream.h"
#include "tests/support/store.h"

namespace kestrove::testing {

constexpr char kScript[] = "/usr/local/apache2/htdocs/state-now.txt";

inline std::string wholeScript() {
  EXPECT_EQ(0, __saveCliState("now"));
  return readFile(kScript);
}

class ScriptTest : public StoreTest {
 protected:
  static ConfigRecord& config() { return shm->config; }

  // The rule in front of the default one, as the script has it.
  static std::string line(const FilterRule& rule) {
    shm->filterTable.rule[1] = shm->filterTable.rule[0];
    shm->filterTable.rule[0] = rule;
    shm->filterTable.ruleCount = 2;
    return printed(__saveSARules);
  }
};

// A rule with nothing in it that the script would show, bridged.
inline FilterRule rule4() {
  FilterRule rule = {};
  rule.ipVersion = 4;
  rule.target = -1;
  rule.ruleAction = 3;
  return rule;
}

}  // namespace kestrove::testing
