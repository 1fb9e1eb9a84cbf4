// SPDX-License-Identifier: Apache-2.0
// A store without a line in the log of the system.
#pragma once

#include <string>
#include <vector>

#include "tests/support/files.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {

using Lines = std::vector<std::string>;

class ProcessTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    clearSyslog();
  }
};

}  // namespace kestrove::testing
