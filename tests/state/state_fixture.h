// SPDX-License-Identifier: Apache-2.0
// The files of a saved state.
#pragma once

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "kestrove/kestrove.h"
#include "tests/support/files.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {

constexpr char kDocuments[] = "/usr/local/apache2/htdocs";
constexpr char kStaging[] = "/usr/local/apache2/htdocs/state";
constexpr char kAgentFile[] = "/var/config/snmpd.conf";
constexpr char kAgentStateFile[] = "/var/net-snmp/snmpd.conf";

inline std::vector<std::string> namesIn(const char* folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

class StateTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    std::filesystem::remove_all(kDocuments);
    for (const char* folder : {kDocuments, "/var/config", "/var/net-snmp"}) {
      std::filesystem::create_directories(folder);
    }
    writeFile(kConfigFile, "the configuration\n");
    writeFile(kAgentFile, "the agent\n");
    writeFile(kAgentStateFile, "the agent's state\n");
    writeFile(kPasswd, "root:x:0:0:root:/root:/bin/sh\n");
    for (const char* program : {"zip", "unzip"}) answer(program, "");
    clearSyslog();
    clearRecords();
  }

  static int events() { return static_cast<int>(shm->eventLog.writeIndex); }
  static const EventRecord& lastEvent() { return shm->eventLog.record[(shm->eventLog.writeIndex + 8191) % 8192]; }
};

}  // namespace kestrove::testing
