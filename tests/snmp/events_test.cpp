// SPDX-License-Identifier: Apache-2.0
// Notifications, and the events that the subagent logs.
#include "tests/snmp/snmp_fixture.h"

namespace kestrove::testing {
namespace {

// kestFlagNotification, as it goes over the wire.
const std::string kFlagNumber("\x2b\x06\x01\x04\x01\x81\xfd\x59\x01\x00\x02", 11);

class SnmpEventsTest : public SnmpTest {};

TEST_F(SnmpEventsTest, EachStartIsLoggedAndEachNewEventTold) {
  EXPECT_TRUE(logged(SHM_EVENT_SNMP_AGENT_STARTED, SHM_SOURCE_SNMP_V2));
  TrapEar ear;
  ASSERT_EQ(0, logEvent(SHM_EVENT_SYSTEM_STATS_CLEARED, SHM_SOURCE_SSH, "alice"));
  EXPECT_TRUE(ear.hears(getEventMessage(SHM_EVENT_SYSTEM_STATS_CLEARED)));
}

TEST_F(SnmpEventsTest, EachOfTheThreeNotificationsIsToldAndCleared) {
  for (int number = 1; number <= 3; ++number) {
    TrapEar ear;
    ASSERT_EQ(0, setNotificationStatus(number));
    EXPECT_TRUE(ear.hears(kFlagNumber));
    EXPECT_TRUE(eventually([] { return shm->notificationStatus == 0; }));
  }
}

#ifdef KESTROVE_HINTS
class SnmpHintsTest : public SnmpTest {
 protected:
  void SetUp() override {
    SnmpTest::SetUp();
    master_->end();
    startMaster(std::string(kConfiguration) + "dlmod kestrove_hints " KESTROVE_HINTS
                                              "\ncreateUser reader\nrouser reader noauth\n");
    ASSERT_TRUE(answers());
  }
  static void askInVain(const std::string& line) { run(line); }
};

TEST_F(SnmpHintsTest, RefusedReadsAreLoggedOnceAMinute) {
  askInVain("snmpget -v1 -c wrong -r0 -t1 127.0.0.1:1161 .1.3");
  EXPECT_TRUE(logged(SHM_EVENT_SNMP_BAD_READ_COMMUNITY, SHM_SOURCE_SNMP_V1));
  askInVain("snmpgetnext -v2c -c wrong -r0 -t1 127.0.0.1:1161 .1.3");
  askInVain("snmpset -v2c -c wrong -r0 -t1 127.0.0.1:1161 .1.3 i 1");
  EXPECT_TRUE(logged(SHM_EVENT_SNMP_BAD_WRITE_COMMUNITY, SHM_SOURCE_SNMP_V2));
  EXPECT_EQ(0, events(SHM_EVENT_SNMP_BAD_READ_COMMUNITY, SHM_SOURCE_SNMP_V2));
}

TEST_F(SnmpHintsTest, WritesOfThoseWhoMayReadAreLogged) {
  askInVain("snmpset -v3 -u reader -l noAuthNoPriv -r0 -t5 127.0.0.1:1161 " + std::string(kObjects) + ".1.2.0 u 64000");
  EXPECT_TRUE(logged(SHM_EVENT_SNMP_BAD_WRITE_COMMUNITY, SHM_SOURCE_SNMP_V3));
  EXPECT_EQ(4096000u, +shm->config.wanLinkRate);
}

TEST_F(SnmpHintsTest, AWalkToTheEndOfWhatMayBeSeenIsNoRefusal) {
  ask("snmpwalk", "public", std::string(kObjects) + ".13");
  EXPECT_TRUE(answers());
  ASSERT_EQ(0, setNotificationStatus(1));  // at whose next look the hints are heard, too
  EXPECT_TRUE(eventually([] { return shm->notificationStatus == 0; }));
  EXPECT_EQ(0, events(SHM_EVENT_SNMP_BAD_READ_COMMUNITY, SHM_SOURCE_SNMP_V2));
}

TEST_F(SnmpHintsTest, AnEventCarriesTheVersionOfItsRequest) {
  const Ran ran = run("snmpset -v1 -c private -t5 127.0.0.1:1161 " + std::string(kObjects) + ".1.9.0 i 1");
  EXPECT_EQ("", ran.err);
  EXPECT_EQ(1, events(SHM_EVENT_COMPRESSION_ON, SHM_SOURCE_SNMP_V1));
}
#endif

}  // namespace
}  // namespace kestrove::testing
