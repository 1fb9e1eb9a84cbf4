// SPDX-License-Identifier: Apache-2.0
// The engine stand-in as its own process, beside front ends of this width.
#include <arpa/inet.h>
#include <signal.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>
#include <vector>

#include "tests/support/program.h"
#include "tests/support/store.h"
#include "tools/sim/act.h"
#include "tools/sim/changes.h"
#include "tools/sim/interval.h"
#include "tools/sim/soundness.h"

namespace kestrove::testing {
namespace {

class Sim : public TalkingProgram {
 public:
  Sim(const char* program, Words arguments)
      : TalkingProgram((arguments.insert(arguments.begin(), program), arguments)) {}
  pid_t pid() { return (*this)->pid(); }
  void stop(int signal = SIGTERM) { strike(pid(), signal); }
  int exitStatus() { return (*this)->status(); }
};

std::string number(pid_t pid) { return std::to_string(pid); }

class SimTest : public StoreTest, public ::testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    shm->config.lanLinkRate = 10000;
    shm->config.wanLinkRate = 20000;
    shm->config.lanMaximumTransferUnit = shm->config.wanMaximumTransferUnit = 1500;
    strcpy(shm->config.lanInterfaceName, "lo");
    strcpy(shm->config.wanInterfaceName, "lo");
  }
  static std::string started(pid_t pid, const char* bits) {
    return "engine " + number(pid) + " (" + bits +
           " bits) started: 1 rules, LAN rate 10000, WAN rate 20000, MTU 1500, compression off";
  }
};

#ifdef KESTROVE_OTHER_SIM
INSTANTIATE_TEST_SUITE_P(Widths, SimTest, ::testing::Values(KESTROVE_SIM, KESTROVE_OTHER_SIM),
                         [](const auto& program) { return program.index == 0 ? "Own" : "Other"; });
#else
INSTANTIATE_TEST_SUITE_P(Widths, SimTest, ::testing::Values(KESTROVE_SIM), [](const auto&) { return "Own"; });
#endif

TEST_P(SimTest, TakesTheEnginesSlotAndLeavesItWhenToldToStop) {
  bool own = strcmp(GetParam(), KESTROVE_SIM) == 0;
  bool wide = own == (sizeof(void*) == 8);
  Sim sim(GetParam(), {});
  EXPECT_EQ(started(sim.pid(), wide ? "64" : "32"), sim.line());
  EXPECT_EQ(sim.pid(), shm_getTaskPid(4));
  sim.stop();
  EXPECT_EQ("engine stopped", sim.line());
  EXPECT_EQ(0, sim.exitStatus());
  EXPECT_EQ(0, shm_getTaskPid(4));
}

TEST_P(SimTest, HearsOfEachChange) {
  Sim sim(GetParam(), {"--changes", "5"});
  sim.line();
  EXPECT_EQ(0, setKestroveConfigItem(1, 100000, 0, "--"));
  EXPECT_EQ("told of: LAN rate", sim.line());
  EXPECT_EQ("  LAN rate: 10000 -> 100000", sim.line());
  EXPECT_EQ(0, setKestroveConfigItem(9, 1, 0, "--"));
  EXPECT_EQ("told of: compression", sim.line());
  EXPECT_EQ("  compression: off -> on", sim.line());
  EXPECT_EQ(0, setKestroveConfigItem(5, 1400, 0, "--"));
  EXPECT_EQ("told of: LAN MTU", sim.line());
  EXPECT_EQ("  MTU: 1500 -> 1400", sim.line());
  FilterRule rule = {};
  rule.ipVersion = 1;
  rule.target = 1;
  EXPECT_EQ(0, insertRule(0, &rule));
  EXPECT_EQ("told of: rules", sim.line());
  EXPECT_EQ("  rules: 1 -> 2, from rule 1 on", sim.line());
  EXPECT_EQ(0u, shm->pendingChanges);
  EXPECT_EQ(0, setKestroveConfigItem(38, 7, 0, "--"));
  EXPECT_EQ("told of: item 38", sim.line());
  EXPECT_EQ("  item 38: 0 -> 7", sim.line());
  EXPECT_EQ("engine stopped", sim.line());
  EXPECT_EQ(0, sim.exitStatus());
}

TEST_P(SimTest, ReportsWhatCrossedItsPorts) {
  Sim sim(GetParam(), {"--interval", "1", "--intervals", "2"});
  sim.line();
  int socket = ::socket(AF_INET, SOCK_DGRAM, 0);
  sockaddr_in self = {};
  self.sin_family = AF_INET;
  self.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  self.sin_port = htons(9);
  char payload[1000] = {};
  sendto(socket, payload, sizeof payload, 0, reinterpret_cast<sockaddr*>(&self), sizeof self);
  close(socket);
  EXPECT_EQ(0u, sim.line().find("interval 1: "));
  EXPECT_EQ(0u, sim.line().find("interval 2: "));
  EXPECT_EQ("engine stopped", sim.line());
  EXPECT_EQ(0, sim.exitStatus());
  EXPECT_EQ(2u, checkStatsCounter());
  EXPECT_GE(+shm->statistics.totalCompressedDataSize, 1000u);
  EXPECT_EQ(100u, shm->statistics.compressionRatio);
  EXPECT_GE(+shm->qos[0].bytesSent, 1000u);
  EXPECT_GE(+shm->qos[9].packetsSent, 1u);
  InterfaceCounters wan;
  EXPECT_EQ(0, getInterfaceStats(1, &wan));
  EXPECT_EQ(+shm->qos[0].bytesSent, +wan.bytesSent);
  EXPECT_EQ(+wan.bytesSent, +wan.bytesReceived) << "the loopback";
}

TEST_P(SimTest, AResetStartsItsCountOfThePortsAnew) {
  Sim sim(GetParam(), {"--interval", "1"});
  sim.line();
  shm->statistics.interfaceRow[0].bytesReceived = 1000000000;
  EXPECT_EQ(0, resetStats(0, "--"));
  EXPECT_EQ(0u, sim.line().find("interval 1: "));
  EXPECT_LT(+shm->statistics.interfaceRow[0].bytesReceived, 1000000000u);
}

TEST_P(SimTest, TheStoresIntervalIsUsedUnlessOneIsGiven) {
  shm->statistics.accumulationInterval = 1;
  Sim sim(GetParam(), {"--intervals", "1"});
  sim.line();
  EXPECT_EQ(0u, sim.line().find("interval 1: "));
}

TEST_P(SimTest, ASecondEngineIsRefusedUnlessItReplacesTheFirst) {
  Sim first(GetParam(), {});
  first.line();
  Sim second(GetParam(), {});
  EXPECT_EQ("", second.line());
  EXPECT_EQ(1, second.exitStatus());
  EXPECT_EQ(first.pid(), shm_getTaskPid(4));
  Sim third(GetParam(), {"--replace"});
  third.line();
  EXPECT_EQ(third.pid(), shm_getTaskPid(4));
  first.stop();
  EXPECT_EQ("engine stopped", first.line());
  EXPECT_EQ(0, first.exitStatus());
  EXPECT_EQ(third.pid(), shm_getTaskPid(4));
}

TEST_P(SimTest, ProductElevenFindsItsPidInTheFile) {
  shm->config.productId = 11;
  Sim sim(GetParam(), {"--changes", "1"});
  sim.line();
  EXPECT_EQ(number(sim.pid()) + "\n", readFile("/var/log/curpid"));
  shm->taskPids[4] = 0;
  EXPECT_EQ(0, notifyKestrove());
  EXPECT_EQ("told of: nothing", sim.line());
}

TEST_P(SimTest, RestartingTheEngineEndsTheStandIn) {
  Sim sim(GetParam(), {});
  sim.line();
  EXPECT_EQ(0, restart_kestrove(0, "--"));
  EXPECT_EQ("engine stopped", sim.line());
  EXPECT_EQ(0, sim.exitStatus());
}

TEST_P(SimTest, ExitCodesTellWhy) {
  Sim usage(GetParam(), {"--interval", "often"});
  EXPECT_EQ(2, usage.exitStatus());
  Sim help(GetParam(), {"--help"});
  EXPECT_EQ(0, help.exitStatus());
  dropStore();
  Sim alone(GetParam(), {});
  EXPECT_EQ(3, alone.exitStatus());
  makeStore();
}

class SimPartsTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    ASSERT_EQ(0, setConfiguration(block_.get()));
    *before_ = *block_;
  }
  using Block = std::unique_ptr<EngineConfiguration>;
  using Lines = std::vector<std::string>;
  Block block_ = std::make_unique<EngineConfiguration>();
  Block before_ = std::make_unique<EngineConfiguration>();
};

TEST_F(SimPartsTest, AFreshSnapshotIsSound) { EXPECT_EQ(Lines{}, sim::findings(*block_)); }

TEST_F(SimPartsTest, EachBrokenPromiseIsFound) {
  auto found = [&](auto damage) {
    *block_ = *before_;
    damage(*block_);
    return sim::findings(*block_);
  };
  using Damaged = EngineConfiguration&;
  EXPECT_EQ(Lines{"LAN side is marked 1"}, found([](Damaged b) { b.lan.side = 1; }));
  EXPECT_EQ(Lines{"WAN side is marked 0"}, found([](Damaged b) { b.wan.side = 0; }));
  EXPECT_EQ(Lines{"LAN congestion flags do not fit together"}, found([](Damaged b) { b.lan.congestionFlagA = 1; }));
  EXPECT_EQ(Lines{"WAN congestion flags do not fit together"}, found([](Damaged b) { b.wan.congestionMode = 1; }));
  EXPECT_EQ(Lines{"LAN reserved bytes are not zero"}, found([](Damaged b) { b.lan.reserved40[19] = 1; }));
  EXPECT_EQ(Lines{"WAN reserved bytes are not zero"}, found([](Damaged b) { b.wan.reserved114[13] = 1; }));
  EXPECT_EQ(Lines{"the sides have different MTUs"}, found([](Damaged b) { b.lan.mtu = 9; }));
  EXPECT_EQ(Lines{"compression is neither on nor off"}, found([](Damaged b) { b.compression = 2; }));
  EXPECT_EQ(Lines{"the constant is 7"}, found([](Damaged b) { b.constant8 = 7; }));
  EXPECT_EQ(Lines{"impossible number of rules: 8193"}, found([](Damaged b) { b.ruleCount = 8193; }));
  EXPECT_EQ(Lines{"rule 1 carries number 5"}, found([](Damaged b) { b.rule[0].order = 5; }));
  EXPECT_EQ(Lines{"rule 1 has target 7"}, found([](Damaged b) { b.rule[0].target = 7; }));
  EXPECT_EQ(Lines{"unused rules are not zero"}, found([](Damaged b) { b.rule[8191].accel = 1; }));
  EXPECT_EQ(Lines{"reserved bytes are not zero"}, found([](Damaged b) { b.reserved852277[0] = 1; }));
  EXPECT_EQ(Lines{"the start options have no end"}, found([](Damaged b) { memset(b.ddupStartupOptions, 'x', 260); }));
}

TEST_F(SimPartsTest, DifferencesAreToldInWords) {
  EXPECT_EQ(Lines{}, sim::differences(*before_, *block_));
  strcpy(block_->wan.interfaceName, "eth0.12");
  block_->lan.hardwareAddress[5] = 0xAB;
  block_->managementAddress = 0x0101A8C0;
  block_->gatewayId[0] = 0x1F;
  block_->singleInterfaceMode = 1;
  strcpy(block_->ddupStartupOptions, "-w 32");
  EXPECT_EQ((Lines{"LAN hardware address: 00:00:00:00:00:00 -> 00:00:00:00:00:ab", "WAN interface: \"\" -> \"eth0.12\"",
                   "management address: 0.0.0.0 -> 192.168.1.1", "gateway identifier: 00000000 -> 1f000000",
                   "single-interface mode: 0 -> 1", "de-duplication options: \"\" -> \"-w 32\""}),
            sim::differences(*before_, *block_));
}

TEST_F(SimPartsTest, BitsHaveNames) {
  EXPECT_EQ("", sim::namesOfBits(0));
  EXPECT_EQ("LAN rate, rules, operating mode", sim::namesOfBits(1u << 0 | 1u << 7 | 1u << 14));
  EXPECT_EQ("bit 4, bit 31", sim::namesOfBits(1u << 4 | 1u << 31));
}

TEST_F(SimPartsTest, ARecordCarriesRatesAndTotals) {
  InterfaceCounters lan = {1000, 0, 10, 0, 1, 0};
  InterfaceCounters wan = {0x100000002, 0, 20, 0, 2, 0};
  sim::IntervalRecord record = sim::makeRecord(lan, wan, 2);
  EXPECT_EQ(2u, record.word[25]);
  EXPECT_EQ(2u, record.word[28]);
  EXPECT_EQ(2u, record.word[31]);
  EXPECT_EQ(1u, record.word[32]);
  EXPECT_EQ(20u, record.word[33]);
  EXPECT_EQ(0xFFFFFFFFu, record.word[37]);
  EXPECT_EQ(1000u, record.word[30 + 15 * 9 + 1]);
  EXPECT_EQ(4000u, record.word[30 + 15 * 9 + 7]);
  EXPECT_EQ(0u, sim::makeRecord(lan, wan, 0).word[37]);
}

TEST_F(SimPartsTest, PortsAreCountedInBothDirections) {
  StatisticsBlock statistics = {};
  const InterfaceCounters lan = {UINT32_MAX, 2, 3, 4, 5, 6};
  const InterfaceCounters wan = {7, 8, 9, 10, 11, 0x100000000};
  for (int i = 0; i < 2; ++i) sim::countPorts(statistics, lan, wan);
  const InterfaceCounters twice[] = {{2ull * UINT32_MAX, 4, 6, 8, 10, 12}, {14, 16, 18, 20, 22, 0x200000000}};
  EXPECT_EQ(0, memcmp(twice, &statistics.interfaceRow, sizeof twice));
  memset(static_cast<void*>(&statistics.interfaceRow), 0, sizeof statistics.interfaceRow);
  const StatisticsBlock untouched = {};
  EXPECT_EQ(0, memcmp(&untouched, &statistics, sizeof statistics)) << "nothing else is written";
}

TEST_F(SimPartsTest, WhoActsCompressesSharesOutAndCountsSessions) {
  const InterfaceCounters port = {100000, 0, 1000, 0, 0, 0};
  sim::IntervalRecord record = sim::makeRecord(port, port, 1);
  block_->compression = 1;
  block_->wan.linkRate = 1000000;
  sim::act(record, *block_);
  EXPECT_EQ(100000u, record.word[25]);
  EXPECT_EQ(40000u, record.word[26]);
  const uint32_t* wan = record.word + 30;
  const uint32_t* first = wan + 15;
  EXPECT_EQ(40000u, wan[1]);
  EXPECT_EQ(6u, wan[10]);
  EXPECT_EQ(0u, wan[5]);
  EXPECT_EQ(1u, first[0]);
  EXPECT_EQ(20000u, first[1]);
  EXPECT_EQ(500u, first[3]);
  EXPECT_EQ(100000u, record.word[30 + 15 * 9 + 1]);
  const SessionEngineStats sessions = sim::sessionRecord(port, port, record);
  EXPECT_EQ(100000u, +sessions.counter[4]);
  EXPECT_EQ(6, +sessions.sessions);
}

TEST_F(SimPartsTest, WhoActsDropsWhereTheWanIsFull) {
  const InterfaceCounters port = {100000, 0, 1000, 0, 0, 0};
  sim::IntervalRecord record = sim::makeRecord(port, port, 1);
  block_->compression = 0;
  block_->wan.linkRate = 800000;
  sim::act(record, *block_);
  EXPECT_EQ(100000u, record.word[26]);
  EXPECT_EQ(10u, record.word[30 + 5]);
}

TEST_P(SimTest, WhoActsTellsOfSessions) {
  Sim sim(GetParam(), {"--interval", "1", "--intervals", "1", "--act"});
  sim.line();
  EXPECT_EQ(0u, sim.line().find("interval 1: "));
  EXPECT_EQ("engine stopped", sim.line());
  EXPECT_EQ(0, sim.exitStatus());
  EXPECT_EQ(8, +shm->qos[8].priority);
}

}  // namespace
}  // namespace kestrove::testing
