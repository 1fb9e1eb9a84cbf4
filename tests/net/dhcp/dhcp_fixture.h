// SPDX-License-Identifier: Apache-2.0
// What a caller hears of a lease.
#pragma once

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "kestrove/kestrove.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {

using Setting = std::pair<uint32_t, std::string>;

inline std::string leaseFile(const std::string& name) { return "/var/lib/dhcpcd/dhcpcd-" + name + ".info"; }
inline std::string pidFile(const std::string& name) { return "/var/run/dhcpcd-" + name + ".pid"; }

class DhcpTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories("/var/lib/dhcpcd");
    heard().clear();
    clearRecords();
    clearSyslog();
    shm_errno = 99;
  }
  void TearDown() override { EXPECT_EQ(99u, shm_errno) << "the client's failures have no code"; }

  // Starts with a callback that keeps what it is told.
  int start(const std::string& name, int timeout) {
    wordOut = 77;
    wordPassed() = &wordOut;
    return dhcp_start(name.c_str(), timeout, keep, &wordOut);
  }

  static std::vector<Setting>& heard() {
    static std::vector<Setting> settings;
    return settings;
  }

  uint32_t wordOut = 0;

 private:
  static uint32_t*& wordPassed() {
    static uint32_t* word = nullptr;
    return word;
  }
  static int keep(uint32_t* kind, const char* value) {
    EXPECT_EQ(wordPassed(), kind);
    heard().emplace_back(*kind, value);
    return -1;  // makes no difference
  }
};

}  // namespace kestrove::testing
