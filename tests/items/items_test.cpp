// SPDX-License-Identifier: Apache-2.0
#include <stddef.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <vector>

#include "tests/support/engine.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

constexpr char kFile[] = "/etc/config/kestrove.conf";
constexpr uint32_t kAllOnes = 0xFFFFFFFFu;

struct Row {
  int id;
  size_t place;
  size_t width;
  std::vector<uint32_t> accepted;  // both ends
  std::vector<uint32_t> refused;   // one step outside, and the extremes
  uint32_t refusal;
  uint32_t onEvent = 0, offEvent = 0;
  bool saved = false;
  uint32_t bit = 0;
};

#define FIELD(name) offsetof(ConfigRecord, name), sizeof(ConfigRecord::name)

const std::vector<uint32_t> kSwitch = {1, 2};
const std::vector<uint32_t> kNoSwitch = {0, 3, 257, 258, kAllOnes};
const std::vector<uint32_t> kLinks = {1, 20, 40, 80, 100, 120, 140};
const std::vector<uint32_t> kNoLinks = {0, 2, 19, 21, 50, 60, 139, 141, 160, kAllOnes};
const std::vector<uint32_t> kAny = {0, 1, 0x7FFFFFFF, 0x80000000u, kAllOnes};

// Items 20 and 41 act on the system and stand in tests of their own.
const Row kRows[] = {
    {1, FIELD(lanLinkRate), {10000, 100000000}, {0, 9999, 100000001, kAllOnes}, SHM_ERANGE, 0, 0, true, 1u << 0},
    {2, FIELD(wanLinkRate), {10000, 0x7FFFFFFF}, {0, 9999, 0x80000000u, kAllOnes}, SHM_ERANGE, 0, 0, true, 1u << 1},
    {4, FIELD(wanMaximumTransferUnit), {576, 1500}, {0, 575, 1501, kAllOnes}, SHM_ERANGE, 0, 0, true, 1u << 3},
    {5, FIELD(lanMaximumTransferUnit), {576, 1500}, {0, 575, 1501, kAllOnes}, SHM_ERANGE, 0, 0, true, 1u << 2},
    {6, FIELD(lanLinkSetting), kLinks, kNoLinks, SHM_EINVAL, 0, 0, true},
    {7, FIELD(wanLinkSetting), kLinks, kNoLinks, SHM_EINVAL, 0, 0, true},
    {8, FIELD(managementLinkSetting), kLinks, kNoLinks, SHM_EINVAL, 0, 0, true},
    {9, FIELD(compression), kSwitch, kNoSwitch, SHM_EINVAL, 9, 10, true, 1u << 5},
    {11, FIELD(snmpOperState), kSwitch, kNoSwitch, SHM_EINVAL, 11, 12, true},
    {12, FIELD(snmpVersion), {1, 2, 3}, {0, 4, 257, kAllOnes}, SHM_EINVAL},
    {13, FIELD(httpOperState), kSwitch, kNoSwitch, SHM_EINVAL, 18, 19, true},
    {14, FIELD(cliOperState), kSwitch, kNoSwitch, SHM_EINVAL, 0, 0, true},
    {15, FIELD(kestroveOperState), kSwitch, kNoSwitch, SHM_EINVAL},
    {16, FIELD(spareFlag), {0, 1, 255}, {}, 0},
    {17, FIELD(sshdOperState), kSwitch, kNoSwitch, SHM_EINVAL, 37, 38, true},
    {18, FIELD(bannerOperState), kSwitch, kNoSwitch, SHM_EINVAL, 0, 0, true},
    {25, FIELD(lanPbrRouteSet), kAny, {}, 0},
    {26, FIELD(wanPbrRouteSet), kAny, {}, 0},
    {35, FIELD(wanCongestionControl), {2, 3, 4, 5}, {0, 1, 6, 258, kAllOnes}, SHM_EINVAL, 0, 0, true, 1u << 6},
    {36, FIELD(loggingOperState), kSwitch, kNoSwitch, SHM_EINVAL, 0, 0, true},
    {37, FIELD(fileBuffering), kSwitch, kNoSwitch, SHM_EINVAL, 0, 0, true},
    {38, FIELD(item38Value), kAny, {}, 0, 0, 0, true, 1u << 10},
    {39, FIELD(failToWireAvailable), kSwitch, kNoSwitch, SHM_EINVAL},
    {40, FIELD(failToWireStatus), kAny, {}, 0},
    {44, FIELD(hardwarePlatform), {0, 14, 15}, {16, 256, kAllOnes}, SHM_EINVAL},
    {54, FIELD(httpSessionTimeout), kAny, {}, 0},
    {55, FIELD(flags[0]), {0, 1}, {2, kAllOnes}, SHM_EINVAL, 0, 0, true},
    {56, FIELD(flags[1]), {0, 1}, {2, kAllOnes}, SHM_EINVAL, 0, 0, true},
    {57, FIELD(flags[2]), {0, 1}, {2, kAllOnes}, SHM_EINVAL, 0, 0, true},
    {58, FIELD(flags[3]), {0, 1}, {2, kAllOnes}, SHM_EINVAL, 0, 0, true},
};

const Row kReadOnly[] = {
    {3, FIELD(wanIpDefaultRtt), {}, {}, SHM_EINVAL},
    {10, FIELD(transparentBridgeOperState), {}, {}, SHM_EINVAL},
    {19, FIELD(singleInterfaceMode), {}, {}, SHM_EINVAL},
    {43, FIELD(opModeState), {}, {}, SHM_EINVAL},
    {47, FIELD(ipv6Support), {}, {}, SHM_EINVAL},
    {48, FIELD(wanOptSupport), {}, {}, SHM_EINVAL},
    {52, FIELD(minRate), {}, {}, SHM_EINVAL},
    {53, FIELD(minMtu), {}, {}, SHM_EINVAL},
};

uint32_t field(const Row& row) {
  uint32_t value = 0;
  memcpy(&value, reinterpret_cast<char*>(&shm->config) + row.place, row.width);
  return value;
}

void put(const Row& row, uint32_t value) {
  memcpy(reinterpret_cast<char*>(&shm->config) + row.place, &value, row.width);
}

class ItemsTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    engine_.emplace();
    strcpy(shm->config.wanInterfaceName, "eth0");
    strcpy(shm->config.bridgeRouterPhysicalName, "eth3");
    strcpy(shm->config.managementInterfaceName, "eth2");
  }
  void TearDown() override {
    engine_.reset();
    StoreTest::TearDown();
  }

  void forget() {
    unlink(kFile);
    shm->pendingChanges = 0;
    shm->eventLog.writeIndex = 0;
    engine_->signalled();
  }
  // What one call left behind, beside the field.
  void expectEffects(uint32_t event, bool saved, uint32_t bit, bool signal) {
    EXPECT_EQ(event ? 1u : 0u, shm->eventLog.writeIndex);
    if (event) {
      EXPECT_EQ(event, shm->eventLog.record[0].eventId);
      EXPECT_EQ(4u, shm->eventLog.record[0].source);
      EXPECT_STREQ("jane", shm->eventLog.record[0].userName);
    }
    EXPECT_EQ(saved, fileExists(kFile));
    EXPECT_EQ(bit, shm->pendingChanges);
    EXPECT_EQ(signal, engine_->signalled());
    EXPECT_EQ(0, shm_lock_count);
  }

  std::optional<EngineChild> engine_;
};

class ItemStates : public ItemsTest, public ::testing::WithParamInterface<uint32_t> {};
INSTANTIATE_TEST_SUITE_P(Modes, ItemStates, ::testing::Values(1u, 4u, 5u));

TEST_P(ItemStates, EveryAcceptedValueIsStoredWithItsEffects) {
  shm->operationalState = GetParam();
  bool acts = GetParam() != SHM_STATE_CONFIGURATION;
  bool marks = acts && GetParam() != SHM_STATE_DEBUG;
  for (const Row& row : kRows) {
    for (size_t i = 0; i < row.accepted.size(); ++i) {
      uint32_t value = row.accepted[i];
      SCOPED_TRACE(::testing::Message() << "item " << row.id << " value " << value);
      put(row, row.accepted[(i + 1) % row.accepted.size()]);
      forget();
      ASSERT_EQ(0, setKestroveConfigItem(row.id, value, 4, "jane"));
      EXPECT_EQ(value, field(row));
      uint32_t event = value == 1 ? row.onEvent : row.offEvent;
      // Switching the log off leaves nothing to write for itself: it has no event.
      expectEffects(acts ? event : 0, acts && row.saved, marks ? row.bit : 0, marks && row.bit);
      if (marks && row.bit) {
        EXPECT_TRUE(engine_->sawChangeDone()) << "signalled too early";
      }
      uint32_t read = 77;
      EXPECT_EQ(0, getKestroveConfigItem(row.id, &read));
      EXPECT_EQ(value, read);
      shm->config.loggingOperState = 1;
    }
  }
}

TEST_P(ItemStates, AnEqualValueDoesNothing) {
  shm->operationalState = GetParam();
  for (const Row& row : kRows) {
    SCOPED_TRACE(::testing::Message() << "item " << row.id);
    put(row, row.accepted[0]);
    forget();
    EXPECT_EQ(0, setKestroveConfigItem(row.id, row.accepted[0], 4, "jane"));
    expectEffects(0, false, 0, false);
  }
  EXPECT_TRUE(shellLines().empty());
}

TEST_P(ItemStates, ARefusedValueChangesNothing) {
  shm->operationalState = GetParam();
  for (const Row& row : kRows) {
    for (uint32_t value : row.refused) {
      SCOPED_TRACE(::testing::Message() << "item " << row.id << " value " << value);
      put(row, row.accepted[0]);
      forget();
      EXPECT_FAILS_WITH(row.refusal, setKestroveConfigItem(row.id, value, 4, "jane"));
      EXPECT_EQ(row.accepted[0], field(row));
      expectEffects(0, false, 0, false);
    }
  }
  EXPECT_TRUE(shellLines().empty());
}

TEST_F(ItemsTest, TheMinimumsOfTheProductBoundRateAndMtu) {
  shm->config.minRate = 256000;
  shm->config.minMtu = 128;
  EXPECT_FAILS_WITH(SHM_ERANGE, setKestroveConfigItem(2, 255999, 0, "--"));
  EXPECT_EQ(0, setKestroveConfigItem(2, 256000, 0, "--"));
  EXPECT_EQ(0, setKestroveConfigItem(4, 128, 0, "--"));
  EXPECT_FAILS_WITH(SHM_ERANGE, setKestroveConfigItem(5, 127, 0, "--"));
}

TEST_F(ItemsTest, ReadOnlyItemsAreReadAndNotSet) {
  shm->config.hardwarePlatform = 14;
  for (const Row& row : kReadOnly) {
    SCOPED_TRACE(::testing::Message() << "item " << row.id);
    put(row, 0x5A);
    uint32_t value = 0;
    EXPECT_EQ(0, getKestroveConfigItem(row.id, &value));
    EXPECT_EQ(0x5Au, value);
    forget();
    EXPECT_FAILS_WITH(SHM_EINVAL, setKestroveConfigItem(row.id, 1, 0, "--"));
    EXPECT_EQ(0x5Au, field(row));
    expectEffects(0, false, 0, false);
  }
}

TEST_F(ItemsTest, WordsAreReadWhole) {
  for (const Row& row : kRows) {
    if (row.width != 4) continue;
    put(row, 0x89ABCDEF);
    uint32_t value = 0;
    EXPECT_EQ(0, getKestroveConfigItem(row.id, &value)) << row.id;
    EXPECT_EQ(0x89ABCDEFu, value) << row.id;
  }
}

TEST_F(ItemsTest, WanOptimisationIsReadOnItsPlatformOnly) {
  shm->config.wanOptSupport = 1;
  for (uint32_t platform = 0; platform <= 16; ++platform) {
    shm->config.hardwarePlatform = platform;
    uint32_t value = 77;
    EXPECT_EQ(0, getKestroveConfigItem(48, &value));
    EXPECT_EQ(platform == 14 ? 1u : 0u, value) << platform;
  }
}

TEST_F(ItemsTest, UnlistedIdsFail) {
  std::vector<bool> listed(61);
  for (const Row& row : kRows) listed[static_cast<size_t>(row.id)] = true;
  for (const Row& row : kReadOnly) listed[static_cast<size_t>(row.id)] = true;
  listed[20] = listed[41] = true;
  std::vector<int> ids = {-1, INT32_MIN, INT32_MAX};
  for (int id = 0; id <= 60; ++id) {
    if (!listed[static_cast<size_t>(id)]) ids.push_back(id);
  }
  EXPECT_EQ(24u, ids.size());
  ShmData before = *shm;
  for (int id : ids) {
    uint32_t value = 77;
    EXPECT_FAILS_WITH(SHM_EINVAL, getKestroveConfigItem(id, &value));
    EXPECT_EQ(77u, value);
    EXPECT_FAILS_WITH(SHM_EINVAL, setKestroveConfigItem(id, 1, 0, "--"));
  }
  EXPECT_EQ(0, memcmp(&before, shm, sizeof before));
}

TEST_F(ItemsTest, TheSpareFlagKeepsTheLowByte) {
  EXPECT_EQ(0, setKestroveConfigItem(16, 0x1FE, 0, "--"));
  EXPECT_EQ(0xFE, shm->config.spareFlag);
  EXPECT_EQ(0, shm->config.ddupOperState);
}

TEST_F(ItemsTest, LinkSettingsReachTheirInterface) {
  EXPECT_EQ(0, setKestroveConfigItem(6, 100, 0, "--"));
  EXPECT_EQ(0, setKestroveConfigItem(7, 1, 0, "--"));
  EXPECT_EQ(0, setKestroveConfigItem(8, 140, 0, "--"));
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_EQ(0, setKestroveConfigItem(6, 20, 0, "--"));
  shm->operationalState = SHM_STATE_DEBUG;
  EXPECT_EQ(0, setKestroveConfigItem(6, 40, 0, "--"));
  EXPECT_EQ((std::vector<std::string>{
                "/usr/bin/mii-diag -F 100 eth3 > /dev/null 2>&1", "/usr/bin/mii-diag -R eth0 > /dev/null 2>&1",
                "/usr/bin/mii-diag -F 140 eth2 > /dev/null 2>&1", "/usr/bin/mii-diag -F 40 eth3 > /dev/null 2>&1"}),
            shellLines());
}

TEST_F(ItemsTest, TheRelayIsSwitchedAndGivenBackAfterASecond) {
  time_t start = time(nullptr);
  EXPECT_EQ(0, setKestroveConfigItem(41, 1, 0, "--"));
  EXPECT_GE(time(nullptr), start + 1);
  EXPECT_EQ(0, setKestroveConfigItem(41, 1, 0, "--"));
  shm->operationalState = SHM_STATE_DEBUG;
  EXPECT_EQ(0, setKestroveConfigItem(41, 2, 0, "--"));
  EXPECT_EQ((std::vector<std::string>{"/sbin/FtwWdgCtl ftw_pwr_bypass", "/sbin/FtwWdgCtl ftw_dynamic_normal",
                                      "/sbin/FtwWdgCtl ftw_pwr_normal", "/sbin/FtwWdgCtl ftw_dynamic_normal"}),
            shellLines());
  clearRecords();
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_EQ(0, setKestroveConfigItem(41, 1, 0, "--"));
  EXPECT_EQ(1u, shm->config.failToWireConfig);
  for (uint32_t value : {0u, 3u, kAllOnes}) EXPECT_FAILS_WITH(SHM_EINVAL, setKestroveConfigItem(41, value, 0, "--"));
  EXPECT_TRUE(shellLines().empty());
  EXPECT_FALSE(fileExists(kFile));
}

// The mode logs the event that drove it; in the single-interface mode every event of the items is without actions or
// refused with an error in the log.
std::vector<std::string> modeEvents() {
  std::vector<std::string> events;
  for (const std::string& line : syslogLines()) {
    size_t at = line.find("opModeSingleOnly event:");
    if (at != std::string::npos) events.push_back(line.substr(line.find(':', at) + 1));
  }
  return events;
}

TEST_F(ItemsTest, PolicyRoutingGoesToTheOperatingModes) {
  shm->config.opModeState = 0;  // two interfaces: both events are ignored there
  for (uint32_t value : {1u, 2u}) {
    forget();
    EXPECT_EQ(0, setKestroveConfigItem(20, value, 4, "jane"));
    EXPECT_EQ(value, shm->config.pbrOperState);
    expectEffects(0, true, 1u << 14, true);
    forget();
    EXPECT_EQ(0, setKestroveConfigItem(20, value, 4, "jane"));
    expectEffects(0, false, 0, false);
  }
  for (uint32_t value : kNoSwitch) EXPECT_FAILS_WITH(SHM_EINVAL, setKestroveConfigItem(20, value, 0, "--"));
}

TEST_F(ItemsTest, PolicyRoutingDrivesItsOwnEvents) {
  shm->config.opModeState = 1;
  clearSyslog();
  EXPECT_EQ(0, setKestroveConfigItem(20, 1, 0, "--"));
  shm->config.opModeState = 1;
  EXPECT_EQ(0, setKestroveConfigItem(20, 2, 0, "--"));
  EXPECT_EQ((std::vector<std::string>{"4", "5"}), modeEvents());
}

TEST_F(ItemsTest, PolicyRoutingInDebugModeIsDrivenAllTheSame) {
  shm->operationalState = SHM_STATE_DEBUG;
  forget();
  EXPECT_EQ(0, setKestroveConfigItem(20, 1, 4, "jane"));
  expectEffects(0, true, 1u << 14, true);
}

TEST_F(ItemsTest, ARefusedModeEventIsTheResultOfPolicyRouting) {
  shm->config.opModeState = 3;
  EXPECT_EQ(-1, setKestroveConfigItem(20, 1, 0, "--"));
  EXPECT_EQ(1, shm->config.pbrOperState);
}

TEST_F(ItemsTest, PolicyRoutingInConfigurationModeIsStoredOnly) {
  shm->config.opModeState = 1;
  shm->operationalState = SHM_STATE_CONFIGURATION;
  clearSyslog();
  forget();
  EXPECT_EQ(0, setKestroveConfigItem(20, 1, 0, "--"));
  EXPECT_EQ(1, shm->config.pbrOperState);
  EXPECT_TRUE(modeEvents().empty());
  expectEffects(0, false, 0, false);
}

TEST_F(ItemsTest, AFailedSaveFailsTheSetAfterItsOtherEffects) {
  unlink(kFile);
  ASSERT_EQ(0, mkdir(kFile, 0755));
  engine_->signalled();
  EXPECT_FAILS_WITH(SHM_ESYSTEM, setKestroveConfigItem(9, 1, 4, "jane"));
  EXPECT_EQ(1, shm->config.compression);
  EXPECT_EQ(9u, shm->eventLog.record[0].eventId);
  EXPECT_EQ(1u << 5, shm->pendingChanges);
  EXPECT_TRUE(engine_->signalled());
  EXPECT_FAILS_WITH(SHM_ESYSTEM, setKestroveConfigItem(6, 100, 0, "--"));
  EXPECT_EQ(1u, shellLines().size());
}

TEST_F(ItemsTest, AnEngineThatCannotBeSignalledKeepsTheLockCounted) {
  pid_t dead = fork();
  if (dead == 0) _exit(0);
  waitpid(dead, nullptr, 0);
  shm->taskPids[4] = dead;
  EXPECT_EQ(0, setKestroveConfigItem(9, 1, 0, "--"));
  EXPECT_EQ(1, shm_lock_count);
  EXPECT_EQ(uint32_t(SHM_ESYSTEM), shm_errno);
  EXPECT_EQ(0, shm_unlock());
  EXPECT_EQ(0, setKestroveConfigItem(11, 1, 0, "--"));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(ItemsTest, ANullUserIsAnEmptyName) {
  EXPECT_EQ(0, setKestroveConfigItem(9, 1, 2, nullptr));
  EXPECT_STREQ("", shm->eventLog.record[0].userName);
}

TEST_F(ItemsTest, NoOutputNoReading) { EXPECT_FAILS_WITH(SHM_EINVAL, getKestroveConfigItem(1, nullptr)); }

struct HookCall {
  int result;
  int lockCount = -1;
  uint32_t rate = 0;
  void* second = nullptr;
};

int hook(void* a, void* b) {
  HookCall& call = *static_cast<HookCall*>(a);
  call.lockCount = shm_lock_count;
  call.rate = shm->config.lanLinkRate;
  call.second = b;
  return call.result;
}

TEST_F(ItemsTest, ThePreHookRunsBeforeTheSetAndItsResultIsIgnored) {
  HookCall call = {-5};
  EXPECT_EQ(0, setKestroveConfigItemPreAct(1, 20000, 0, "--", hook, &call, &call.rate));
  EXPECT_EQ(0u, call.rate);
  EXPECT_EQ(0, call.lockCount);
  EXPECT_EQ(&call.rate, call.second);
  EXPECT_EQ(20000u, shm->config.lanLinkRate);
  HookCall refused = {0};
  EXPECT_FAILS_WITH(SHM_ERANGE, setKestroveConfigItemPreAct(1, 1, 0, "--", hook, &refused, nullptr));
  EXPECT_EQ(20000u, refused.rate);
  EXPECT_EQ(0, setKestroveConfigItemPreAct(1, 30000, 0, "--", nullptr, nullptr, nullptr));
}

TEST_F(ItemsTest, ThePostHookRunsAfterASuccessfulSetAndGivesTheResult) {
  HookCall call = {17};
  EXPECT_EQ(17, setKestroveConfigItemPostAct(1, 20000, 0, "--", hook, &call, &call.rate));
  EXPECT_EQ(20000u, call.rate);
  EXPECT_EQ(0, call.lockCount);
  EXPECT_EQ(&call.rate, call.second);
  HookCall skipped = {17};
  EXPECT_FAILS_WITH(SHM_ERANGE, setKestroveConfigItemPostAct(1, 1, 0, "--", hook, &skipped, nullptr));
  EXPECT_EQ(-1, skipped.lockCount);
  EXPECT_EQ(0, setKestroveConfigItemPostAct(1, 30000, 0, "--", nullptr, nullptr, nullptr));
}

TEST_F(ItemsTest, TheNetworkPostHookDoesTheSame) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  uint32_t address = 0x0100000A;
  HookCall call = {17};
  EXPECT_EQ(17, setNetworkConfigItemPostAct(4, &address, 0, "--", hook, &call, &call.rate));
  EXPECT_EQ(address, shm->config.lanIpAddress);
  EXPECT_EQ(0, call.lockCount);
  HookCall skipped = {17};
  EXPECT_FAILS_WITH(SHM_EINVAL, setNetworkConfigItemPostAct(0, &address, 0, "--", hook, &skipped, nullptr));
  EXPECT_EQ(-1, skipped.lockCount);
  EXPECT_EQ(0, setNetworkConfigItemPostAct(4, &address, 0, "--", nullptr, nullptr, nullptr));
}

struct NetworkRow {
  int id;
  size_t place;
  const char* event;  // null: none
  bool mask = false;
};

#undef FIELD
#define FIELD(name) offsetof(ConfigRecord, name)

const NetworkRow kNetworkRows[] = {
    {1, FIELD(managementAddress), "12"},
    {2, FIELD(managementAddressMask), "12", true},
    {3, FIELD(managementBroadcastAddress), "12"},
    {4, FIELD(lanIpAddress), "14"},
    {5, FIELD(lanIpAddressMask), "18"},
    {6, FIELD(lanBroadcastAddress), "14"},
    {7, FIELD(wanIpAddress), "13"},
    {8, FIELD(wanIpAddressMask), "17"},
    {9, FIELD(wanBroadcastAddress), "13"},
    {12, FIELD(managementAddressMask), "12", true},
    {13, FIELD(managementBroadcastAddress), "12"},
    {14, FIELD(lanGateway), "16"},
    {15, FIELD(wanGateway), nullptr},
};

uint32_t& field(const NetworkRow& row) {
  return *reinterpret_cast<uint32_t*>(reinterpret_cast<char*>(&shm->config) + row.place);
}

constexpr uint32_t kMask24 = 0x00FFFFFF;

TEST_P(ItemStates, NetworkItemsAreStoredAndHandedToTheSystem) {
  shm->operationalState = GetParam();
  shm->config.opModeState = 1;
  bool acts = GetParam() != SHM_STATE_CONFIGURATION;
  for (const NetworkRow& row : kNetworkRows) {
    SCOPED_TRACE(::testing::Message() << "item " << row.id);
    field(row) = 0;
    forget();
    clearSyslog();
    shm_errno = 99;
    uint32_t value = row.mask ? kMask24 : 0x0101A8C0;
    ASSERT_EQ(0, setNetworkConfigItem(row.id, &value, 4, "jane"));
    EXPECT_EQ(value, field(row));
    std::vector<std::string> events;
    if (acts && row.event) events.push_back(row.event);
    EXPECT_EQ(events, modeEvents());
    expectEffects(0, acts, 0, false);
    // The walk of the empty route table leaves its code.
    EXPECT_EQ(acts ? uint32_t(SHM_ENOENT) : 99u, shm_errno);
    uint32_t read = 0;
    EXPECT_EQ(0, getNetworkConfigItem(row.id, &read));
    EXPECT_EQ(value, read);

    forget();
    clearSyslog();
    EXPECT_EQ(0, setNetworkConfigItem(row.id, &value, 4, "jane"));
    EXPECT_TRUE(modeEvents().empty());
    expectEffects(0, false, 0, false);
  }
}

TEST_F(ItemsTest, NetworkItemsTakeAnyAddress) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  for (const NetworkRow& row : kNetworkRows) {
    for (uint32_t value : {kAllOnes, 1u, 0u}) {
      if (row.mask && value != kAllOnes) continue;
      EXPECT_EQ(0, setNetworkConfigItem(row.id, &value, 0, "--")) << row.id;
      EXPECT_EQ(value, field(row)) << row.id;
    }
  }
}

TEST_F(ItemsTest, UnlistedNetworkIdsFail) {
  uint32_t value = 77;
  for (int id : {INT32_MIN, -1, 0, 10, 11, 16, 17, 60, INT32_MAX}) {
    EXPECT_FAILS_WITH(SHM_EINVAL, getNetworkConfigItem(id, &value));
    EXPECT_FAILS_WITH(SHM_EINVAL, setNetworkConfigItem(id, &value, 0, "--"));
  }
  EXPECT_EQ(77u, value);
  EXPECT_FAILS_WITH(SHM_EINVAL, getNetworkConfigItem(1, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, setNetworkConfigItem(1, nullptr, 0, "--"));
  EXPECT_FALSE(fileExists(kFile));
}

TEST_F(ItemsTest, ABadManagementMaskIsRefusedEvenWhenItIsTheStoredOne) {
  for (int id : {2, 12}) {
    for (uint32_t mask : {0u, 0x00FF00FFu, 0x000000FEu << 8}) {
      shm->config.managementAddressMask = mask;
      EXPECT_FAILS_WITH(SHM_EMASK, setNetworkConfigItem(id, &mask, 0, "--"));
      EXPECT_EQ(mask, shm->config.managementAddressMask);
    }
  }
  EXPECT_FALSE(fileExists(kFile));
  uint32_t holes = 0x00FF00FF;  // other masks are not checked
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_EQ(0, setNetworkConfigItem(5, &holes, 0, "--"));
}

TEST_P(ItemStates, TheManagementAddressTellsAnEngineThatRoutesByPolicy) {
  shm->operationalState = GetParam();
  shm->config.opModeState = 1;
  bool marks = GetParam() == SHM_STATE_OPERATIONAL;
  uint32_t address = 0x0101A8C0;
  for (uint8_t pbr : {uint8_t(1), uint8_t(2)}) {
    shm->config.pbrOperState = pbr;
    forget();
    ++address;
    EXPECT_EQ(0, setNetworkConfigItem(1, &address, 0, "--"));
    bool told = marks && pbr == 1;
    expectEffects(0, GetParam() != SHM_STATE_CONFIGURATION, told ? 1u << 13 : 0, told);
  }
}

TEST_F(ItemsTest, TheManagementAddressRefreshesTheServers) {
  uint32_t address = 0x0101A8C0;
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_EQ(0, setNetworkConfigItem(1, &address, 0, "--"));
  EXPECT_TRUE(shellLines().empty());
  shm->operationalState = SHM_STATE_DEBUG;
  ++address;
  EXPECT_EQ(0, setNetworkConfigItem(1, &address, 0, "--"));
  EXPECT_EQ((std::vector<std::string>{"/usr/bin/apacheConfig.sh ", "/usr/bin/snmpdConfig.sh  > /dev/null 2>&1",
                                      "/usr/bin/sshdConfig.sh "}),
            shellLines());
  clearRecords();
  EXPECT_EQ(0, setNetworkConfigItem(3, &address, 0, "--"));
  EXPECT_TRUE(shellLines().empty());
}

TEST_F(ItemsTest, AFailedModeEventDoesNotFailANetworkItem) {
  shm->config.opModeState = 3;
  uint32_t address = 0x0101A8C0;
  EXPECT_EQ(0, setNetworkConfigItem(7, &address, 0, "--"));
  EXPECT_TRUE(fileExists(kFile));
}

TEST_F(ItemsTest, AFailedSaveFailsANetworkItemWithItsCode) {
  ASSERT_EQ(0, mkdir(kFile, 0755));
  uint32_t address = 0x0101A8C0;
  EXPECT_FAILS_WITH(SHM_ESYSTEM, setNetworkConfigItem(7, &address, 0, "--"));
  EXPECT_EQ(address, shm->config.wanIpAddress);
}

TEST_F(ItemsTest, ItemsNeedTheStore) {
  engine_.reset();
  dropStore();
  uint32_t value = 77;
  EXPECT_FAILS_WITH(SHM_EATTACH, getKestroveConfigItem(1, &value));
  EXPECT_FAILS_WITH(SHM_EATTACH, setKestroveConfigItem(1, 20000, 0, "--"));
  EXPECT_FAILS_WITH(SHM_EATTACH, getNetworkConfigItem(1, &value));
  EXPECT_FAILS_WITH(SHM_EATTACH, setNetworkConfigItem(1, &value, 0, "--"));
  EXPECT_EQ(77u, value);
  unlink("/var/lock/shm");
  makeStore();
}

}  // namespace
}  // namespace kestrove::testing
