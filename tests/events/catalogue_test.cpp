// SPDX-License-Identifier: Apache-2.0
// The catalogue and the sources, row by row, as syslog and the listing show them.
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

struct Row {
  const char* type;
  const char* description;
};

constexpr Row kRows[] = {
    {"---", "Unknown event"},
    {"Information", "System Stopped"},
    {"Information", "System Started"},
    {"Information", "System Rebooted"},
    {"Information", "System Updated"},
    {"Error", "System Update Failed"},
    {"Error", "System File Download Failed"},
    {"Information", "simpleAttach On"},
    {"Information", "simpleAttach Off"},
    {"Information", "System Compression On"},
    {"Information", "System Compression Off"},
    {"Information", "SNMP management enabled"},
    {"Information", "SNMP management disabled"},
    {"Information", "System time set"},
    {"Information", "System Compression Ratio Cleared"},
    {"Information", "Optimization Stats Cleared"},
    {"Information", "System Stats Cleared"},
    {"Information", "System Event Log Cleared"},
    {"Information", "Web interface enabled"},
    {"Information", "Web interface disabled"},
    {"Information", "Gateway Started"},
    {"Information", "Web interface login"},
    {"Warning", "Web interface login failed"},
    {"Information", "Web server started"},
    {"Information", "CLI Login"},
    {"Warning", "CLI Login failed"},
    {"Warning", "SNMP Unauthorized Read Community"},
    {"Warning", "SNMP Unauthorized Write Community"},
    {"Information", "SNMP agent started"},
    {"Information", "Event log cleared"},
    {"Information", "Stats cleared"},
    {"Information", "Compression ratio cleared"},
    {"Diagnostic", "System Initialization failed"},
    {"Diagnostic", "Initialization of serial port failed"},
    {"Diagnostic", "The task monitor has restarted"},
    {"Diagnostic", "The task miscMonitor has started"},
    {"Information", "SSH daemon started"},
    {"Information", "SSH daemon enabled"},
    {"Information", "SSH daemon disabled"},
    {"Information", "System State Saved"},
    {"Information", "System Restored to Saved State"},
    {"Information", "Web cache daemon enabled"},
    {"Information", "Web cache daemon disabled"},
    {"Information", "Web cache cleared"},
    {"Information", "CIFS daemon enabled"},
    {"Information", "CIFS daemon disabled"},
    {"Information", "DRE daemon enabled"},
    {"Information", "DRE daemon disabled"},
    {"Information", "DRE cache cleared"},
};
constexpr uint32_t kCount = 49;
static_assert(sizeof kRows / sizeof kRows[0] == kCount);

constexpr const char* kSources[] = {"System",  "Kestrove", "HTTP",    "Serial", "SSH",    "SNMP v1",
                                    "SNMP v2", "SNMP v3",  "unknown", "(null)", "(null)", "(null)"};

class EventCatalogue : public StoreTest {};

TEST_F(EventCatalogue, EveryEventHasItsTypeAndDescription) {
  clearSyslog();
  std::vector<std::string> expected;
  for (uint32_t id = 0; id < kCount; ++id) {
    EXPECT_STREQ(kRows[id].description, getEventMessage(id));
    EXPECT_EQ(0, logEvent(id, 2, "admin"));
    expected.push_back(std::string("info: Event logged: ") + kRows[id].type + ", HTTP, " + kRows[id].description);
  }
  EXPECT_EQ(expected, syslogLines());
  for (uint32_t id = 0; id < kCount; ++id) {
    char line[128];
    getEventString(id, line, sizeof line, 2);
    EXPECT_EQ(std::string(kRows[id].type) + ",HTTP,admin," + kRows[id].description, std::string(line).substr(20));
  }
}

TEST_F(EventCatalogue, IdsOutsideItAreUnknownEvents) {
  for (uint32_t id : {49u, 50u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_STREQ("Unknown event", getEventMessage(id)) << id;
  }
}

TEST_F(EventCatalogue, DescriptionsNeedNoStore) {
  dropStore();
  EXPECT_STREQ("System Started", getEventMessage(2));
}

TEST_F(EventCatalogue, SourcesAreFoundByPositionAndTheUnnamedHaveNoName) {
  clearSyslog();
  std::vector<std::string> expected;
  for (uint32_t source = 0; source < 12; ++source) {
    EXPECT_EQ(0, logEvent(24, source, "admin"));
    expected.push_back(std::string("info: Event logged: Information, ") + kSources[source] + ", CLI Login");
    char line[128];
    getEventString(source, line, sizeof line, 2);
    EXPECT_EQ(std::string("Information,") + kSources[source] + ",admin,CLI Login", std::string(line).substr(20));
  }
  EXPECT_EQ(expected, syslogLines());
}

TEST_F(EventCatalogue, SourcesBeyondTheTableHaveNoName) {
  for (uint32_t source : {12u, 13u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    clearSyslog();
    EXPECT_EQ(0, logEvent(24, source, "admin"));
    EXPECT_EQ(std::vector<std::string>{"info: Event logged: Information, (null), CLI Login"}, syslogLines());
    EXPECT_EQ(source, shm->eventLog.record[shm->eventLog.writeIndex - 1].source);
  }
}

}  // namespace
}  // namespace kestrove::testing
