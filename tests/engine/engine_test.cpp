// SPDX-License-Identifier: Apache-2.0
#include <string.h>
#include <unistd.h>

#include <memory>
#include <vector>

#include "tests/support/engine.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

constexpr char kPidFile[] = "/var/log/curpid";
constexpr size_t kBlockSize = 852544;

// The expected block, written by position.
class Block {
 public:
  Block() : bytes_(kBlockSize) {}
  void word(size_t position, uint32_t value) {
    for (size_t i = 0; i < 4; ++i) bytes_[position + i] = static_cast<uint8_t>(value >> (8 * i));
  }
  void byte(size_t position, uint8_t value) { bytes_[position] = value; }
  void text(size_t position, const std::string& value) { memcpy(&bytes_[position], value.data(), value.size()); }
  void rule(size_t number, const FilterRule& rule) { memcpy(&bytes_[304 + 104 * number], &rule, 104); }
  const std::vector<uint8_t>& bytes() const { return bytes_; }

 private:
  std::vector<uint8_t> bytes_;
};

// One byte more than the block: it must stay.
std::vector<uint8_t> fetchBlock(int expected = 0) {
  std::vector<uint8_t> bytes(kBlockSize + 1, 0xEE);
  EXPECT_EQ(expected, setConfiguration(bytes.data()));
  EXPECT_EQ(0xEE, bytes.back());
  bytes.pop_back();
  return bytes;
}

uint32_t wordAt(const std::vector<uint8_t>& bytes, size_t position) {
  uint32_t value;
  memcpy(&value, &bytes[position], 4);
  return value;
}

void expectSame(const Block& expected, const std::vector<uint8_t>& found) {
  ASSERT_EQ(kBlockSize, found.size());
  for (size_t i = 0; i < kBlockSize; ++i) ASSERT_EQ(expected.bytes()[i], found[i]) << "position " << i;
}

void fillSettings() {
  ConfigRecord& config = shm->config;
  strcpy(config.lanInterfaceName, "eth1");
  config.lanSendBufferSize = 0x01020304;
  config.lanReceiveBufferSize = 0x05060708;
  config.lanLinkRate = 100000000;
  config.lanCongestionControl = 3;
  config.lanMaximumTransferUnit = 1500;
  strcpy(config.wanInterfaceName, "eth0.12");
  config.wanSendBufferSize = 0x11121314;
  config.wanReceiveBufferSize = 0x15161718;
  config.wanLinkRate = 0xFFFFFFFF;
  config.wanCongestionControl = 4;
  config.wanMaximumTransferUnit = 1400;
  config.wanIpDefaultRtt = 250;
  config.transparentBridgeOperState = 1;
  config.ipv6Support = 1;
  config.item38Value = 0xA1B2C3D4;
  config.managementAddress = 0x0101A8C0;
  config.managementAddressMask = 0x00FFFFFF;
  memcpy(config.gatewayId, "\x01\x02\xFE\xFF", 4);
  config.compression = 1;
  config.singleInterfaceMode = 2;
  config.ddupOperState = 6;
  shm->statistics.accumulationInterval = 10;
  memcpy(shm->lanHardwareAddress, "\x00\x11\x22\x33\xF4\xF5", 6);
  memcpy(shm->wanHardwareAddress, "\xA0\xA1\xA2\xA3\xA4\xA5", 6);
  strcpy(shm->ddupStartupOptions, "--window 32");
}

Block expectedSettings() {
  Block block;
  block.text(0, "eth1");
  block.word(16, 0x01020304);
  block.word(20, 0x05060708);
  block.word(24, 100000000);
  block.word(28, 2);
  block.word(32, 0);
  block.word(36, 1400);
  block.word(60, 1);
  block.word(64, 0);
  block.text(108, std::string("\x00\x11\x22\x33", 4));
  block.word(112, 0xF5F4);
  block.text(128, "eth0.12");
  block.word(144, 0x11121314);
  block.word(148, 0x15161718);
  block.word(152, 0xFFFFFFFF);
  block.word(156, 2);
  block.word(160, 1);
  block.word(164, 1400);
  block.word(188, 0);
  block.word(192, 1);
  block.text(236, "\xA0\xA1\xA2\xA3");
  block.word(240, 0xA5A4);
  block.word(256, 250);
  block.word(260, 1);
  block.word(264, 1);
  block.word(268, 0xA1B2C3D4);
  block.word(272, 0x0101A8C0);
  block.word(276, 0x00FFFFFF);
  block.text(280, "\x01\x02\xFE\xFF");
  block.word(284, 1);
  block.word(288, 0);
  block.word(292, 10);
  block.word(296, 8);
  block.byte(852276, 2);
  block.word(852280, 6);
  block.text(852284, "--window 32");
  return block;
}

FilterRule distinctRule(uint32_t order, int32_t target) {
  FilterRule rule;
  uint32_t words[26];
  for (uint32_t i = 0; i < 26; ++i) words[i] = order * 1000 + i;
  memcpy(&rule, words, sizeof rule);
  rule.order = order;
  rule.target = target;
  return rule;
}

class EngineTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    shm->filterTable.ruleCount = 0;
    memset(&shm->filterTable.rule[0], 0, sizeof(FilterRule));
  }
};

TEST_F(EngineTest, AnEmptyTablePrintsNothing) {
  fillSettings();
  ::testing::internal::CaptureStdout();
  std::vector<uint8_t> block = fetchBlock();
  EXPECT_EQ("", ::testing::internal::GetCapturedStdout());
  expectSame(expectedSettings(), block);
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(EngineTest, RulesArriveNumberedByTheirPlace) {
  fillSettings();
  shm->filterTable.ruleCount = 3;
  FilterRule rules[] = {distinctRule(5, 7), distinctRule(9, 0), distinctRule(12, -1)};
  memcpy(shm->filterTable.rule, rules, sizeof rules);
  shm->filterTable.rule[3] = distinctRule(77, 1);  // not in use
  ::testing::internal::CaptureStdout();
  std::vector<uint8_t> block = fetchBlock();
  EXPECT_EQ(
      "shm->filterTable.rule[rule].ruleAction: 5025 ACTIVE: 3\n"
      "shm->filterTable.rule[rule].ruleAction: 9025 ACTIVE: 3\n"
      "shm->filterTable.rule[rule].ruleAction: 12025 ACTIVE: 3\n",
      ::testing::internal::GetCapturedStdout());
  Block expected = expectedSettings();
  expected.word(300, 3);
  for (uint32_t i = 0; i < 3; ++i) {
    expected.rule(i, rules[i]);
    expected.word(304 + 104 * i + 21 * 4, i + 1);
  }
  expected.word(304 + 20 * 4, 1);  // a positive target is the rule's number too
  expectSame(expected, block);
  EXPECT_EQ(0, memcmp(rules, shm->filterTable.rule, sizeof rules));
}

TEST_F(EngineTest, AFullTableFillsTheBlock) {
  shm->filterTable.ruleCount = SHM_RULES;
  for (int i = 0; i < SHM_RULES; ++i) {
    shm->filterTable.rule[i].target = 1;
    shm->filterTable.rule[i].ruleAction = i % 2 ? 0x80000000u : 3u;
  }
  ::testing::internal::CaptureStdout();
  std::vector<uint8_t> block = fetchBlock();
  std::string expected;
  for (int i = 0; i < SHM_RULES; ++i) {
    expected += "shm->filterTable.rule[rule].ruleAction: " + std::string(i % 2 ? "-2147483648" : "3") + " ACTIVE: 3\n";
  }
  EXPECT_EQ(expected, ::testing::internal::GetCapturedStdout());
  EXPECT_EQ(8192u, wordAt(block, 300));
  for (size_t i = 0; i < SHM_RULES; ++i) {
    ASSERT_EQ(i + 1, wordAt(block, 304 + 104 * i + 80)) << i;
    ASSERT_EQ(i + 1, wordAt(block, 304 + 104 * i + 84)) << i;
  }
  EXPECT_EQ(0u, wordAt(block, 852272));
}

TEST_F(EngineTest, ThePrintedLinesKeepTheirPlaceAmongTheCallers) {
  shm->filterTable.ruleCount = 1;
  shm->filterTable.rule[0].ruleAction = 3;
  std::vector<uint8_t> block(kBlockSize);
  ::testing::internal::CaptureStdout();
  printf("before\n");
  setConfiguration(block.data());
  printf("after\n");
  EXPECT_EQ("before\nshm->filterTable.rule[rule].ruleAction: 3 ACTIVE: 3\nafter\n",
            ::testing::internal::GetCapturedStdout());
}

TEST_F(EngineTest, ADamagedCountCopiesNoMoreThanTheTable) {
  std::vector<uint8_t> last;
  for (int32_t count : {8193, INT32_MAX}) {
    shm->filterTable.ruleCount = count;
    ::testing::internal::CaptureStdout();
    last = fetchBlock();
    ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(8192u, wordAt(last, 300));
  }
  for (int32_t count : {-1, INT32_MIN}) {
    shm->filterTable.ruleCount = count;
    EXPECT_EQ(0u, wordAt(fetchBlock(), 300));
  }
}

TEST_F(EngineTest, CongestionCodesAreMapped) {
  struct {
    uint8_t code;
    uint32_t mode, flagA, flagB, global;
  } rows[] = {{0, 0, 0, 0, 0}, {1, 0, 0, 0, 1}, {2, 2, 0, 0, 0}, {3, 2, 1, 0, 0},
              {4, 2, 0, 1, 0}, {5, 0, 0, 0, 0}, {6, 0, 0, 0, 0}, {255, 0, 0, 0, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(int(row.code));
    shm->config.lanCongestionControl = row.code;
    shm->config.wanCongestionControl = 2;
    std::vector<uint8_t> block = fetchBlock();
    EXPECT_EQ(row.mode, wordAt(block, 28));
    EXPECT_EQ(row.flagA, wordAt(block, 60));
    EXPECT_EQ(row.flagB, wordAt(block, 64));
    EXPECT_EQ(0u, wordAt(block, 288));
    shm->config.lanCongestionControl = 2;
    shm->config.wanCongestionControl = row.code;
    block = fetchBlock();
    EXPECT_EQ(row.mode, wordAt(block, 156));
    EXPECT_EQ(row.flagA, wordAt(block, 188));
    EXPECT_EQ(row.flagB, wordAt(block, 192));
    EXPECT_EQ(row.global, wordAt(block, 288));
  }
}

TEST_F(EngineTest, BothSidesCarryTheSmallerMtu) {
  struct {
    uint32_t lan, wan, both;
  } rows[] = {{1500, 1400, 1400}, {1300, 1400, 1300}, {1400, 1400, 1400}, {0xFFFFFFFF, 5, 5}, {0, 7, 0}};
  for (const auto& row : rows) {
    shm->config.lanMaximumTransferUnit = row.lan;
    shm->config.wanMaximumTransferUnit = row.wan;
    std::vector<uint8_t> block = fetchBlock();
    EXPECT_EQ(row.both, wordAt(block, 36));
    EXPECT_EQ(row.both, wordAt(block, 164));
  }
}

TEST_F(EngineTest, SwitchesBecomeOneOrZero) {
  for (uint32_t value : {0u, 1u, 2u, 5u}) {
    shm->config.transparentBridgeOperState = shm->config.compression = static_cast<uint8_t>(value);
    shm->config.ipv6Support = value;
    std::vector<uint8_t> block = fetchBlock();
    uint32_t on = value == 1;
    EXPECT_EQ(on, wordAt(block, 260));
    EXPECT_EQ(on, wordAt(block, 264));
    EXPECT_EQ(on, wordAt(block, 284));
  }
}

TEST_F(EngineTest, TextsThatFillTheirFieldEndThere) {
  memset(shm->config.lanInterfaceName, 'l', 16);
  memset(shm->config.wanInterfaceName, 'w', 16);
  memset(shm->ddupStartupOptions, 'd', 256);
  std::vector<uint8_t> block = fetchBlock();
  EXPECT_EQ(std::string(16, 'l') + std::string(4, '\0'), std::string(block.begin(), block.begin() + 20));
  EXPECT_EQ(std::string(16, 'w') + std::string(4, '\0'), std::string(block.begin() + 128, block.begin() + 148));
  EXPECT_EQ(std::string(256, 'd') + std::string(4, '\0'), std::string(block.begin() + 852284, block.end()));
}

TEST_F(EngineTest, TheBlockIsPackedTheSameInBothWidths) {
  EXPECT_EQ(kBlockSize, sizeof(EngineConfiguration));
  EngineConfiguration block;
  fillSettings();
  EXPECT_EQ(0, setConfiguration(&block));
  EXPECT_STREQ("eth0.12", block.wan.interfaceName);
  EXPECT_EQ(1u, block.wan.side);
  EXPECT_EQ(0xA5, block.wan.hardwareAddress[5]);
  EXPECT_EQ(8u, block.constant8);
  EXPECT_STREQ("--window 32", block.ddupStartupOptions);
}

TEST_F(EngineTest, WithoutTheStoreTheBlockIsNotTouched) {
  dropStore();
  std::vector<uint8_t> block(kBlockSize, 0xEE);
  EXPECT_FAILS_WITH(SHM_EATTACH, setConfiguration(block.data()));
  EXPECT_EQ(std::vector<uint8_t>(kBlockSize, 0xEE), block);
  uint32_t mask = 77;
  EXPECT_FAILS_WITH(SHM_EATTACH, receiveKestroveEvent(&mask));
  EXPECT_EQ(77u, mask);
  EXPECT_FAILS_WITH(SHM_EATTACH, notifyKestrove());
  makeStore();
}

TEST_F(EngineTest, MarksAreFetchedOnce) {
  shm->pendingChanges = 0x80004001;
  EXPECT_FAILS_WITH(SHM_EINVAL, receiveKestroveEvent(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, setConfiguration(nullptr));
  uint32_t mask = 77;
  EXPECT_EQ(0, receiveKestroveEvent(&mask));
  EXPECT_EQ(0x80004001u, mask);
  EXPECT_EQ(0u, shm->pendingChanges);
  EXPECT_EQ(0, receiveKestroveEvent(&mask));
  EXPECT_EQ(0u, mask);
}

TEST_F(EngineTest, TheEngineOfTheTaskTableIsSignalled) {
  EngineChild engine;
  for (uint32_t product : {0u, 1u, 5u, 10u, 12u}) {
    shm->config.productId = product;
    EXPECT_EQ(0, notifyKestrove());
    EXPECT_TRUE(engine.signalled());
  }
  EXPECT_EQ(0, shm_lock_count);
  EXPECT_TRUE(programs().empty());
}

TEST_F(EngineTest, WithoutAnEngineNothingIsSignalled) {
  for (int32_t pid : {1, 0, -1, INT32_MIN}) {
    shm->taskPids[4] = pid;
    EXPECT_FAILS_WITH(99, notifyKestrove());  // no code is set
    EXPECT_EQ(0, shm_lock_count);
  }
}

TEST_F(EngineTest, ADeadEngineKeepsTheLockCounted) {
  pid_t dead = fork();
  if (dead == 0) _exit(0);
  waitpid(dead, nullptr, 0);
  for (int32_t pid : {dead, INT32_MAX}) {
    shm->taskPids[4] = pid;
    EXPECT_FAILS_WITH(SHM_ESYSTEM, notifyKestrove());
    EXPECT_EQ(1, shm_lock_count);
    EXPECT_EQ(0, shm_unlock());
  }
}

TEST_F(EngineTest, ProductElevenHasItsPidInAFile) {
  EngineChild engine;
  shm->config.productId = 11;
  shm->taskPids[4] = 0;
  std::string pid = std::to_string(engine.pid());
  for (const std::string& text :
       {pid, pid + "\n", "  " + pid + "\nother", pid + " rest", std::string(77 - pid.size(), '0') + pid + "99"}) {
    writeFile(kPidFile, text);
    EXPECT_EQ(0, notifyKestrove()) << text;
    EXPECT_TRUE(engine.signalled()) << text;
  }
}

TEST_F(EngineTest, AFileWithoutAPidIsNoEngine) {
  EngineChild engine;
  shm->config.productId = 11;
  unlink(kPidFile);
  EXPECT_FAILS_WITH(99, notifyKestrove());
  for (const char* text : {"", "\n", "engine", "1", "0", "-5", "\n1234", "-99999999999999999999"}) {
    writeFile(kPidFile, text);
    EXPECT_FAILS_WITH(99, notifyKestrove());
    EXPECT_EQ(0, shm_lock_count);
  }
  writeFile(kPidFile, "99999999999999999999");
  EXPECT_FAILS_WITH(SHM_ESYSTEM, notifyKestrove());
  EXPECT_EQ(0, shm_unlock());
  EXPECT_FALSE(engine.signalled());
}

TEST_F(EngineTest, ProductNineRestartsUnlessARateChanged) {
  EngineChild engine;
  shm->config.productId = 9;
  shm->config.kestroveRestartCount = 3;
  for (uint32_t pending : {1u, 2u, 3u, 0x81u}) {
    shm->pendingChanges = pending;
    EXPECT_EQ(0, notifyKestrove());
    EXPECT_TRUE(programs().empty());
  }
  EXPECT_EQ(3u, shm->config.kestroveRestartCount);
  shm->pendingChanges = 0xFFFFFFFC;
  EXPECT_EQ(0, notifyKestrove());
  EXPECT_TRUE(engine.signalled());
  EXPECT_EQ((std::vector<std::string>{"/usr/bin/killall kestrove"}), programs());
  EXPECT_EQ(0u, shm->config.kestroveRestartCount);
  EXPECT_EQ(1, shm->config.kestroveOperState);
  EXPECT_EQ(0xFFFFFFFCu, shm->pendingChanges);
  EXPECT_EQ(0, shm_lock_count);
}

// This process is its own engine, which has fetched the marks before the signal's sender goes on.
TEST_F(EngineTest, AnEngineThatFetchesAtOnceIsNotRestartedForARate) {
  auto* before = signal(SIGUSR1, [](int) { shm->pendingChanges = 0; });
  shm->config.productId = 9;
  shm->taskPids[4] = getpid();
  shm->pendingChanges = 1;
  EXPECT_EQ(0, notifyKestrove());
  signal(SIGUSR1, before);
  EXPECT_EQ(0u, shm->pendingChanges);
  EXPECT_TRUE(programs().empty());
}

}  // namespace
}  // namespace kestrove::testing
