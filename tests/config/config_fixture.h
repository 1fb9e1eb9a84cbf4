// SPDX-License-Identifier: Apache-2.0
// A configuration file that is read.
#pragma once

#include <string>
#include <vector>

#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {

constexpr char kInput[] = "/tmp/input.conf";

inline const std::vector<std::string> kNoMessages;

// Reads the text as a configuration file; what is said of it.
inline std::vector<std::string> load(const std::string& text) {
  writeFile(kInput, text);
  clearSyslog();
  EXPECT_EQ(0, load_shared_memory(kInput));
  return syslogLines();
}

}  // namespace kestrove::testing
