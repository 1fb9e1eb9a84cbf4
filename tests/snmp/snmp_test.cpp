// SPDX-License-Identifier: Apache-2.0
// The subagent behind the machine's own agent, as a manager sees it.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "tests/support/program.h"
#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kModule[] = ".1.3.6.1.4.1.32473.1.1";
constexpr char kWanRate[] = ".1.2.0";
constexpr char kConfiguration[] =
    "agentAddress udp:127.0.0.1:1161\n"
    "master agentx\n"
    "agentXSocket /tmp/agentx\n"
    "rocommunity public\n"
    "rwcommunity private\n"
    "trap2sink 127.0.0.1:1162 public\n";

// A manager's ear for notifications.
class TrapEar {
 public:
  TrapEar() : socket_(::socket(AF_INET, SOCK_DGRAM, 0)) {
    struct sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(1162);
    bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    struct timeval patience = {kPatience / 1000, 0};
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  }
  ~TrapEar() { close(socket_); }
  // Whether one comes that holds the text.
  bool hears(const std::string& text) const {
    char trap[2048];
    for (ssize_t length; (length = recv(socket_, trap, sizeof trap, 0)) > 0;) {
      if (std::string(trap, static_cast<size_t>(length)).find(text) != std::string::npos) return true;
    }
    return false;
  }

 private:
  int socket_;
};

class SnmpTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    shm->config.snmpOperState = SHM_ON;
    shm->config.snmpVersion = 2;
    shm->config.wanLinkRate = 4096000;
    writeFile("/tmp/snmpd.conf", kConfiguration);
    startMaster();
    agent_ = std::make_unique<Program>(Words{KESTROVE_SNMP, "--master", "/tmp/agentx"});
    ASSERT_TRUE(eventually([] { return get(kWanRate) == "4096000\n"; }));
  }
  void startMaster() {
    master_ = std::make_unique<Program>(
        Words{"/usr/sbin/snmpd", "-f", "-Lf", "/tmp/snmpd.log", "-C", "-c", "/tmp/snmpd.conf"});
  }
  static std::string ask(const char* program, const char* community, const std::string& rest) {
    const Ran ran =
        run("MIBS= " + std::string(program) + " -v2c -c " + community + " -t 5 -Oqvn 127.0.0.1:1161 " + rest);
    return ran.out + ran.err;
  }
  static std::string get(const std::string& place) { return ask("snmpget", "public", kModule + place); }
  static std::string set(const std::string& place, const std::string& value) {
    return ask("snmpset", "private", kModule + place + " " + value);
  }
  static long walked(const std::string& place) {
    const std::string out = ask("snmpbulkwalk -Cr50", "public", kModule + place);
    return std::count(out.begin(), out.end(), '\n');
  }
  static const EventRecord& lastEvent() { return shm->eventLog.record[shm->eventLog.writeIndex - 1]; }

  std::unique_ptr<Program> master_;
  std::unique_ptr<Program> agent_;
};

TEST_F(SnmpTest, ScalarsAreReadAndSet) {
  EXPECT_EQ("2048000\n", set(kWanRate, "u 2048000"));
  EXPECT_EQ(2048000u, +shm->config.wanLinkRate);
  EXPECT_EQ("\"a name\"\n", set(".3.1.0", "s \"a name\""));
  EXPECT_STREQ("a name", shm->config.sysName);
  EXPECT_EQ("1\n", set(".1.9.0", "i 1"));
  EXPECT_EQ(uint32_t{SHM_EVENT_COMPRESSION_ON}, +lastEvent().eventId);
  EXPECT_EQ(uint32_t{SHM_SOURCE_SNMP_V2}, +lastEvent().source);
}

TEST_F(SnmpTest, WhatIsNoValueIsRefusedAndNothingChanges) {
  EXPECT_THAT(set(kWanRate, "u 5"), HasSubstr("wrongValue"));
  EXPECT_THAT(set(kWanRate, "i 2048000"), HasSubstr("wrongType"));
  EXPECT_THAT(set(".3.1.0", "s " + std::string(257, 'x')), HasSubstr("wrongLength"));
  EXPECT_THAT(set(".1.99.0", "u 1"), HasSubstr("noCreation"));
  EXPECT_EQ(4096000u, +shm->config.wanLinkRate);
  EXPECT_FALSE(fileExists("/etc/config/kestrove.conf"));
}

TEST_F(SnmpTest, OfTwoValuesOneIsWrongAndBothStay) {
  EXPECT_THAT(set(kWanRate, "u 2048000 " + std::string(kModule) + ".1.4.0 u 5"), HasSubstr("wrongValue"));
  EXPECT_EQ(4096000u, +shm->config.wanLinkRate);
}

TEST_F(SnmpTest, WhatRunsProgramsIsNotWritable) {
  for (const char* place : {".1.6.0 u", ".1.20.0 i", ".1.41.0 u", ".2.1.0 a", ".5.1.0 u", ".10.1.2.1 s"}) {
    const std::string text(place);
    EXPECT_THAT(
        set(text.substr(0, text.find(' ')), text.substr(text.find(' ') + 1) + (text.back() == 'a' ? " 1.2.3.4" : " 1")),
        ::testing::AnyOf(HasSubstr("notWritable"), HasSubstr("noCreation")))
        << place;
  }
}

TEST_F(SnmpTest, SwitchedOffItReadsAndSetsNothing) {
  shm->config.snmpOperState = SHM_OFF;
  EXPECT_THAT(set(kWanRate, "u 2048000"), HasSubstr("noAccess"));
  EXPECT_EQ("4096000\n", get(kWanRate));
}

TEST_F(SnmpTest, TablesHaveTheRowsThatAreThere) {
  EXPECT_EQ(1, walked(".7.1.2"));
  shm->filterTable.ruleCount = SHM_RULES;
  EXPECT_EQ(SHM_RULES, walked(".7.1.2"));
  shm->filterTable.ruleCount = -1;
  EXPECT_EQ("No Such Instance currently exists at this OID\n", get(".7.1.2.1"));
  shm->routes.slot[5].inUse = 1;
  shm->routes.slot[5].destination = inet_addr("10.1.0.0");
  EXPECT_EQ("10.1.0.0\n", ask("snmpwalk", "public", std::string(kModule) + ".8.1.2"));
  strcpy(shm->config.users[0].username, "admin");
  shm->config.userCount = 1;
  EXPECT_EQ("\"admin\"\n", ask("snmpwalk", "public", std::string(kModule) + ".10"));
  EXPECT_EQ(SHM_QOS_ROWS, walked(".12.1.2"));
  EXPECT_EQ(SHM_TASKS, walked(".13"));
}

TEST_F(SnmpTest, CountersOfSixtyFourBitsAreWhole) {
  shm->qos[0].bytesSent = 0x123456789ABCDEF0;
  EXPECT_EQ("1311768467463790320\n", get(".12.1.3.1"));
}

TEST_F(SnmpTest, EventsAndNotificationsAreTold) {
  EXPECT_EQ(uint32_t{SHM_EVENT_SNMP_AGENT_STARTED}, +lastEvent().eventId);
  TrapEar ear;
  ASSERT_EQ(0, logEvent(SHM_EVENT_SYSTEM_STATS_CLEARED, SHM_SOURCE_SSH, "alice"));
  EXPECT_TRUE(ear.hears(getEventMessage(SHM_EVENT_SYSTEM_STATS_CLEARED)));
  ASSERT_EQ(0, setNotificationStatus(2));
  EXPECT_TRUE(eventually([] { return shm->notificationStatus == 0; }));
}

TEST_F(SnmpTest, AMasterThatWasKilledGetsItsSubagentBack) {
  const char* asked = getenv("KESTROVE_MASTER_KILLS");
  for (int i = asked ? atoi(asked) : 2; i > 0; --i) {
    master_->end(SIGKILL);
    unlink("/tmp/agentx");
    startMaster();
    ASSERT_TRUE(eventually([] { return get(kWanRate) == "4096000\n"; }));
  }
}

TEST_F(SnmpTest, WithoutAStoreThereIsNothingAndWithANewOneItsValues) {
  dropStore();
  EXPECT_TRUE(eventually([] { return get(kWanRate) != "4096000\n"; }));
  makeStore();
  shm->config.wanLinkRate = 64000;
  EXPECT_TRUE(eventually([] { return get(kWanRate) == "64000\n"; }));
}

TEST_F(SnmpTest, AStoppedHolderOfTheLockDoesNotStopReading) {
  ASSERT_EQ(0, shm_lock());
  EXPECT_EQ("4096000\n", get(kWanRate));
  EXPECT_THAT(set(kWanRate, "u 2048000"), HasSubstr("resourceUnavailable"));
  EXPECT_EQ(0, shm_unlock());
}

TEST_F(SnmpTest, ItEndsWhenItIsTold) { EXPECT_EQ(0, agent_->end()); }

TEST(SnmpModuleTest, IsWhatTheAgentPrintsAndClean) {
  const Ran printed = run(KESTROVE_SNMP " --module");
  EXPECT_EQ(readFile(KESTROVE_MODULE), printed.out) << "kestrove-snmp --module >" KESTROVE_MODULE;
  const Ran lint = run("SMIPATH=" KESTROVE_MODULES " smilint -l 6 " KESTROVE_MODULE);
  EXPECT_EQ("", lint.out + lint.err);
  EXPECT_EQ(2, run(KESTROVE_SNMP " --nonsense").status);
  EXPECT_EQ(0, run(KESTROVE_SNMP " --help").status);
}

}  // namespace
}  // namespace kestrove::testing
