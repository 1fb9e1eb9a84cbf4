// SPDX-License-Identifier: Apache-2.0
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

#include "tests/support/engine.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

constexpr char kFile[] = "/etc/config/kestrove.conf";

class AccessorsTest : public StoreTest {};

struct TextRow {
  int id;
  char* field;
};

std::vector<TextRow> texts() {
  return {{1, shm->config.sysName},
          {2, shm->config.sysLocation},
          {3, shm->config.sysContact},
          {8, shm->config.httpEncryptedId}};
}

TEST_F(AccessorsTest, TextsAreStoredAndSavedOnAChange) {
  for (const TextRow& row : texts()) {
    SCOPED_TRACE(row.id);
    unlink(kFile);
    EXPECT_EQ(0, setShmString(row.id, "a rack"));
    EXPECT_STREQ("a rack", row.field);
    EXPECT_TRUE(fileExists(kFile));
    char buffer[256];
    EXPECT_EQ(0, getShmString(row.id, buffer, sizeof buffer));
    EXPECT_STREQ("a rack", buffer);
    unlink(kFile);
    EXPECT_EQ(0, setShmString(row.id, "a rack"));
    EXPECT_FALSE(fileExists(kFile));
    shm->operationalState = SHM_STATE_CONFIGURATION;
    EXPECT_EQ(0, setShmString(row.id, ""));
    EXPECT_STREQ("", row.field);
    EXPECT_FALSE(fileExists(kFile));
    shm->operationalState = SHM_STATE_DEBUG;
    EXPECT_EQ(0, setShmString(row.id, "b"));
    EXPECT_TRUE(fileExists(kFile));
  }
}

TEST_F(AccessorsTest, AShorterTextLeavesNothingOfTheLongerOne) {
  EXPECT_EQ(0, setShmString(1, std::string(256, 'x').c_str()));
  EXPECT_EQ(0, setShmString(1, "ab"));
  EXPECT_EQ(std::string("ab") + std::string(254, '\0'), std::string(shm->config.sysName, 256));
}

TEST_F(AccessorsTest, ATextFillsItsFieldAndIsReadWithItsWidth) {
  std::string full(256, 'x');
  EXPECT_EQ(0, setShmString(1, full.c_str()));
  EXPECT_EQ(full, std::string(shm->config.sysName, 256));
  EXPECT_EQ(0, shm->config.sysLocation[0]);
  EXPECT_FAILS_WITH(SHM_EINVAL, setShmString(1, std::string(257, 'y').c_str()));
  EXPECT_FAILS_WITH(SHM_EINVAL, setShmString(1, std::string(100000, 'y').c_str()));
  char buffer[300];
  memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(0, getShmString(1, buffer, 256));
  EXPECT_EQ(full + "#", std::string(buffer, 257));
  EXPECT_EQ(0, getShmString(1, buffer, 300));
  EXPECT_STREQ(full.c_str(), buffer);
  EXPECT_EQ('#', buffer[257]);
}

TEST_F(AccessorsTest, TheDescriptionIsReadOnly) {
  strcpy(shm->config.sysDescription, "an appliance");
  char buffer[256];
  EXPECT_EQ(0, getShmString(4, buffer, sizeof buffer));
  EXPECT_STREQ("an appliance", buffer);
  EXPECT_FAILS_WITH(SHM_EINVAL, setShmString(4, "other"));
  EXPECT_STREQ("an appliance", shm->config.sysDescription);
}

TEST_F(AccessorsTest, TextsRefuseShortBuffersOtherIdsAndNull) {
  char buffer[256] = "kept";
  for (int size : {255, 15, 0, -1, INT32_MIN}) EXPECT_FAILS_WITH(SHM_EINVAL, getShmString(1, buffer, size));
  for (int id : {INT32_MIN, -1, 0, 5, 6, 7, 9, 60, INT32_MAX}) {
    EXPECT_FAILS_WITH(SHM_EINVAL, getShmString(id, buffer, sizeof buffer));
    EXPECT_FAILS_WITH(SHM_EINVAL, setShmString(id, "x"));
  }
  EXPECT_FAILS_WITH(SHM_EINVAL, getShmString(1, nullptr, 256));
  EXPECT_FAILS_WITH(SHM_EINVAL, setShmString(1, nullptr));
  EXPECT_STREQ("kept", buffer);
  EXPECT_FALSE(fileExists(kFile));
}

TEST_F(AccessorsTest, AFailedSaveOfATextLeavesItsCodeOnly) {
  ASSERT_EQ(0, mkdir(kFile, 0755));
  shm_errno = 0;
  EXPECT_EQ(0, setShmString(1, "x"));
  EXPECT_EQ(uint32_t(SHM_ESYSTEM), shm_errno);
  shm_errno = 0;
  EXPECT_EQ(0, setEventSourceUsername("x"));
  EXPECT_EQ(uint32_t(SHM_ESYSTEM), shm_errno);
}

void nameInterfaces() {
  ConfigRecord& config = shm->config;
  strcpy(config.lanInterfaceName, "eth1");
  strcpy(config.wanInterfaceName, "eth0.12");
  strcpy(config.physicalLanInterfaceName, "eth4");
  strcpy(config.physicalWanInterfaceName, "eth5");
  strcpy(config.managementInterfaceName, "eth2");
  strcpy(config.bridgeRouterPhysicalName, "eth3");
}

std::string nameOf(int (*get)(int, char*, int), int number) {
  char buffer[64] = "untouched";
  shm_errno = 99;
  if (get(number, buffer, sizeof buffer) != 0) return "error " + std::to_string(shm_errno) + " " + buffer;
  return buffer;
}

TEST_F(AccessorsTest, InterfaceNumbersHaveTheirNames) {
  nameInterfaces();
  const char* refused = "error 3 untouched";
  struct {
    int number;
    const char* current;
    const char* physical;
  } rows[] = {
      {0, "eth1", "eth4"},    {1, "eth0.12", "eth5"},        {2, refused, refused},        {3, "eth2", "eth2"},
      {4, "br0", "br0"},      {5, "eth3", "eth3"},           {6, refused, refused},        {-1, refused, refused},
      {60, refused, refused}, {INT32_MIN, refused, refused}, {INT32_MAX, refused, refused}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.current, nameOf(getInterfaceName, row.number)) << row.number;
    EXPECT_EQ(row.physical, nameOf(getPhysicalInterfaceName, row.number)) << row.number;
  }
}

TEST_F(AccessorsTest, InterfaceNamesNeedFifteenBytes) {
  memcpy(shm->config.lanInterfaceName, "fifteenletters!", 16);
  char buffer[17] = "";
  for (int size : {14, 0, -1}) {
    EXPECT_FAILS_WITH(SHM_EINVAL, getInterfaceName(0, buffer, size));
    EXPECT_FAILS_WITH(SHM_EINVAL, getPhysicalInterfaceName(4, buffer, size));
    EXPECT_FAILS_WITH(SHM_EINVAL, setInterfaceName(0, "eth9", size));
  }
  EXPECT_EQ(0, getInterfaceName(0, buffer, 15));
  EXPECT_STREQ("fifteenletters", buffer);
  EXPECT_EQ(0, getInterfaceName(0, buffer, 16));
  EXPECT_STREQ("fifteenletters!", buffer);
  EXPECT_FAILS_WITH(SHM_EINVAL, getInterfaceName(0, nullptr, 16));
  EXPECT_FAILS_WITH(SHM_EINVAL, getPhysicalInterfaceName(0, nullptr, 16));
  EXPECT_FAILS_WITH(SHM_EINVAL, setInterfaceName(0, nullptr, 16));
}

TEST_F(AccessorsTest, AnUnterminatedNameEndsWithItsField) {
  memset(shm->config.bridgeRouterPhysicalName, 'b', 16);
  memset(shm->config.physicalLanInterfaceName, 'l', 16);
  char buffer[64];
  EXPECT_EQ(0, getInterfaceName(5, buffer, sizeof buffer));
  EXPECT_EQ(std::string(15, 'b'), buffer);
  struct {
    char base[16], guard1[4], lan[16], guard2[4];
  } out = {"", "g1", "", "g2"};
  EXPECT_EQ(0, getBridgeRouterLanWanPhysName(out.base, out.lan, 1));
  EXPECT_EQ(std::string(15, 'b'), out.base);
  EXPECT_EQ(std::string(15, 'l'), out.lan);
  EXPECT_STREQ("g1", out.guard1);
  EXPECT_STREQ("g2", out.guard2);
}

TEST_F(AccessorsTest, FourInterfaceNamesCanBeSet) {
  nameInterfaces();
  struct {
    int number;
    char* field;
  } rows[] = {{0, shm->config.lanInterfaceName},
              {1, shm->config.wanInterfaceName},
              {3, shm->config.managementInterfaceName},
              {5, shm->config.bridgeRouterPhysicalName}};
  for (const auto& row : rows) {
    memset(row.field, 'z', 16);
    EXPECT_EQ(0, setInterfaceName(row.number, "a-name-of-more-than-fifteen", 15));
    EXPECT_EQ(std::string("a-name-of-more-") + '\0', std::string(row.field, 16));
    EXPECT_EQ(0, setInterfaceName(row.number, "p", 100));
    EXPECT_STREQ("p", row.field);
  }
  for (int number : {-1, 2, 4, 6, INT32_MAX}) EXPECT_FAILS_WITH(SHM_EINVAL, setInterfaceName(number, "x", 16));
  EXPECT_STREQ("eth4", shm->config.physicalLanInterfaceName);
  EXPECT_STREQ("eth5", shm->config.physicalWanInterfaceName);
  EXPECT_FALSE(fileExists(kFile));
}

TEST_F(AccessorsTest, BaseAndLanNamesAndIdsComeWithOrWithoutTheLock) {
  nameInterfaces();
  shm->config.lanVlanId = 11;
  shm->config.wanVlanId = 12;
  for (int takeLock : {0, 1, 7}) {
    char base[16], lan[16];
    EXPECT_EQ(0, getBridgeRouterLanWanPhysName(base, lan, takeLock));
    EXPECT_STREQ("eth3", base);
    EXPECT_STREQ("eth4", lan);
    uint32_t lanId = 0, wanId = 0;
    EXPECT_EQ(0, getLanWanVlanId(&lanId, &wanId, takeLock));
    EXPECT_EQ(11u, lanId);
    EXPECT_EQ(12u, wanId);
    EXPECT_EQ(0, getLanWanVlanId(nullptr, &wanId, takeLock));
    EXPECT_EQ(0, getLanWanVlanId(&lanId, nullptr, takeLock));
    EXPECT_FAILS_WITH(SHM_EINVAL, getBridgeRouterLanWanPhysName(nullptr, lan, takeLock));
    EXPECT_FAILS_WITH(SHM_EINVAL, getBridgeRouterLanWanPhysName(base, nullptr, takeLock));
  }
}

TEST_F(AccessorsTest, UnlockedAccessorsAttachAndDoNotLock) {
  shm->config.fileBuffering = 2;
  shm_detach();
  shm = nullptr;
  uint32_t id = 77;
  EXPECT_EQ(0, getLanWanVlanId(&id, nullptr, 0));
  ASSERT_NE(nullptr, shm);
  shm_detach();
  shm = nullptr;
  EXPECT_EQ(2, getShmFileBuffering());
  EXPECT_EQ(0, shm_lock_count);
  dropStore();
  char name[16];
  EXPECT_FAILS_WITH(SHM_EATTACH, getLanWanVlanId(&id, nullptr, 0));
  EXPECT_FAILS_WITH(SHM_EATTACH, getBridgeRouterLanWanPhysName(name, name, 0));
  EXPECT_FAILS_WITH(SHM_EATTACH, getShmFileBuffering());
  makeStore();
}

TEST_F(AccessorsTest, OperationalStatesAreZeroToFive) {
  for (uint32_t state = 0; state <= 5; ++state) {
    EXPECT_EQ(0, setShmOperationalState(state));
    EXPECT_EQ(static_cast<int>(state), getShmOperationalState());
    EXPECT_EQ(state, shm->operationalState);
  }
  for (uint32_t state : {6u, 0x80000000u, 0xFFFFFFFFu}) EXPECT_FAILS_WITH(SHM_EINVAL, setShmOperationalState(state));
  EXPECT_EQ(5u, shm->operationalState);
  EXPECT_FALSE(fileExists(kFile));
}

TEST_F(AccessorsTest, TheCliStateIsRead) {
  shm->config.cliOperState = 2;
  EXPECT_EQ(2, getCliOperationalState());
}

TEST_F(AccessorsTest, ReadingConsumesANotification) {
  for (int n : {1, 2, 3}) {
    EXPECT_EQ(0, setNotificationStatus(n));
    EXPECT_EQ(1 << (n - 1), shm->notificationStatus);
    EXPECT_EQ(1, getNotificationStatus(n));
    EXPECT_EQ(0, getNotificationStatus(n));
    EXPECT_EQ(0, shm->notificationStatus);
  }
  shm->notificationStatus = 0xFF;
  EXPECT_EQ(1, getNotificationStatus(2));
  EXPECT_EQ(0xFD, shm->notificationStatus);
  for (int n : {0, 4, -1, 60, INT32_MIN, INT32_MAX}) {
    EXPECT_FAILS_WITH(SHM_EINVAL, getNotificationStatus(n));
    EXPECT_FAILS_WITH(SHM_EINVAL, setNotificationStatus(n));
  }
  EXPECT_EQ(0xFD, shm->notificationStatus);
}

TEST_F(AccessorsTest, SourceComponentsAreZeroToEight) {
  for (uint32_t component = 0; component <= 8; ++component) {
    EXPECT_EQ(0, setShmSourceComponent(component));
    EXPECT_EQ(static_cast<int>(component), getShmSourceComponent());
  }
  EXPECT_FAILS_WITH(SHM_EINVAL, setShmSourceComponent(9));
  EXPECT_FAILS_WITH(SHM_EINVAL, setShmSourceComponent(0xFFFFFFFFu));
  EXPECT_EQ(8u, shm->sourceComponent);
  EXPECT_FALSE(fileExists(kFile));
}

TEST_F(AccessorsTest, TheEventUserIsCutToItsField) {
  char buffer[40];
  memset(shm->eventSourceUsername, 'z', 32);
  EXPECT_EQ(0, getEventSourceUsername(buffer));
  EXPECT_EQ(std::string(31, 'z'), buffer);
  EXPECT_EQ(0, setEventSourceUsername("jane"));
  EXPECT_EQ(std::string("jane") + std::string(28, '\0'), std::string(shm->eventSourceUsername, 32));
  EXPECT_TRUE(fileExists(kFile));
  EXPECT_EQ(0, getEventSourceUsername(buffer));
  EXPECT_STREQ("jane", buffer);
  for (size_t length : {31u, 32u, 33u, 1000u}) {
    EXPECT_EQ(0, setEventSourceUsername(std::string(length, 'n').c_str()));
    EXPECT_EQ(std::string(31, 'n') + '\0', std::string(shm->eventSourceUsername, 32));
  }
  memcpy(shm->eventSourceUsername, "jane\0left over", 14);
  EXPECT_EQ(0, setEventSourceUsername("jane"));
  EXPECT_EQ(std::string("jane") + std::string(28, '\0'), std::string(shm->eventSourceUsername, 32));
  unlink(kFile);
  EXPECT_EQ(0, setEventSourceUsername("jane"));
  EXPECT_FALSE(fileExists(kFile));
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_EQ(0, setEventSourceUsername("joe"));
  EXPECT_FALSE(fileExists(kFile));
  EXPECT_FAILS_WITH(SHM_EINVAL, setEventSourceUsername(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getEventSourceUsername(nullptr));
}

// The event that drove the operating modes and its four ids, from what the mode logs and runs.
std::vector<std::string> modeEvents() {
  std::vector<std::string> events;
  for (const std::string& line : syslogLines()) {
    for (const char* mode : {"opModeSingleOnly event:", "opModeSinglePBR event:"}) {
      size_t at = line.find(mode);
      if (at != std::string::npos) events.push_back(line.substr(at));
    }
  }
  return events;
}

class SingleInterfaceTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    nameInterfaces();
    shm->config.singleInterfaceMode = 2;
    shm->config.pbrOperState = 2;
    clearSyslog();
  }
  static bool vconfigRan(const std::string& words) {
    for (const std::string& line : shellLines()) {
      if (line.find("vconfig " + words) != std::string::npos) return true;
    }
    return false;
  }
};

TEST_F(SingleInterfaceTest, ModeAndIdsAreRead) {
  shm->config.lanVlanId = 11;
  shm->config.wanVlanId = 12;
  uint32_t mode, lan, wan;
  EXPECT_EQ(0, getSingleInterfaceMode(&mode, &lan, &wan));
  EXPECT_EQ(2u, mode);
  EXPECT_EQ(11u, lan);
  EXPECT_EQ(12u, wan);
  EXPECT_FAILS_WITH(SHM_EINVAL, getSingleInterfaceMode(nullptr, &lan, &wan));
  EXPECT_FAILS_WITH(SHM_EINVAL, getSingleInterfaceMode(&mode, nullptr, &wan));
  EXPECT_FAILS_WITH(SHM_EINVAL, getSingleInterfaceMode(&mode, &lan, nullptr));
}

TEST_F(SingleInterfaceTest, BadModesAndIdsAreRefused) {
  for (uint32_t mode : {0u, 3u, 257u, 0xFFFFFFFFu}) EXPECT_FAILS_WITH(SHM_EINVAL, setSingleInterfaceMode(mode, 1, 2));
  EXPECT_FAILS_WITH(SHM_EINVAL, setSingleInterfaceMode(1, 0, 2));
  EXPECT_FAILS_WITH(SHM_EINVAL, setSingleInterfaceMode(1, 1, 0));
  EXPECT_EQ(2, shm->config.singleInterfaceMode);
  EXPECT_EQ(0u, shm->config.lanVlanId);
  EXPECT_FALSE(fileExists(kFile));
}

TEST_F(SingleInterfaceTest, SwitchingOnMakesTheVlansOfTheNewIds) {
  EngineChild engine;
  EXPECT_EQ(0, setSingleInterfaceMode(1, 11, 12));
  EXPECT_EQ(1, shm->config.singleInterfaceMode);
  EXPECT_EQ(11u, shm->config.lanVlanId);
  EXPECT_EQ(12u, shm->config.wanVlanId);
  EXPECT_EQ(1u, shm->config.opModeState);
  EXPECT_EQ(1u << 14, shm->pendingChanges);
  EXPECT_TRUE(engine.signalled());
  EXPECT_TRUE(fileExists(kFile));
  EXPECT_TRUE(vconfigRan("add eth3 11"));
  EXPECT_TRUE(vconfigRan("add eth3 12"));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(SingleInterfaceTest, SwitchingOffIgnoresTheIdsAndEndsPolicyRouting) {
  shm->config.singleInterfaceMode = 1;
  shm->config.pbrOperState = 1;
  shm->config.lanVlanId = 11;
  shm->config.wanVlanId = 12;
  shm->config.opModeState = 1;
  EXPECT_EQ(0, setSingleInterfaceMode(2, 21, 22));
  EXPECT_EQ(2, shm->config.singleInterfaceMode);
  EXPECT_EQ(2, shm->config.pbrOperState);
  EXPECT_EQ(11u, shm->config.lanVlanId);
  EXPECT_EQ(12u, shm->config.wanVlanId);
  EXPECT_EQ(0u, shm->config.opModeState);
  EXPECT_EQ((std::vector<std::string>{"opModeSingleOnly event:3"}), modeEvents());
}

TEST_F(SingleInterfaceTest, OtherIdsMoveTheVlans) {
  shm->config.singleInterfaceMode = 1;
  shm->config.lanVlanId = 11;
  shm->config.wanVlanId = 12;
  shm->config.opModeState = 1;
  EXPECT_EQ(0, setSingleInterfaceMode(1, 11, 22));
  EXPECT_EQ(22u, shm->config.wanVlanId);
  EXPECT_EQ((std::vector<std::string>{"opModeSingleOnly event:6"}), modeEvents());
  EXPECT_TRUE(vconfigRan("rem eth3.11"));
  EXPECT_TRUE(vconfigRan("rem eth3.12"));
  EXPECT_FALSE(vconfigRan("rem eth3.22"));
  EXPECT_TRUE(vconfigRan("add eth3 11"));
  EXPECT_TRUE(vconfigRan("add eth3 22"));
  EXPECT_FALSE(vconfigRan("add eth3 12"));
  EXPECT_EQ(1u, shm->config.opModeState);
}

TEST_F(SingleInterfaceTest, NothingNewDrivesNoEvent) {
  EXPECT_EQ(0, setSingleInterfaceMode(2, 0, 0));
  shm->config.singleInterfaceMode = 1;
  shm->config.lanVlanId = 11;
  shm->config.wanVlanId = 12;
  shm->config.opModeState = 1;
  shm->config.pbrOperState = 1;
  EXPECT_EQ(0, setSingleInterfaceMode(1, 11, 12));
  EXPECT_EQ(1, shm->config.pbrOperState);
  EXPECT_TRUE(modeEvents().empty());
  EXPECT_FALSE(fileExists(kFile));
  EXPECT_EQ(0u, shm->pendingChanges);
}

TEST_F(SingleInterfaceTest, ConfigurationModeStoresOnly) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_EQ(0, setSingleInterfaceMode(1, 11, 12));
  EXPECT_EQ(0, setSingleInterfaceMode(1, 21, 22));
  EXPECT_EQ(1, shm->config.singleInterfaceMode);
  EXPECT_EQ(21u, shm->config.lanVlanId);
  EXPECT_EQ(0u, shm->config.opModeState);
  EXPECT_TRUE(shellLines().empty());
  EXPECT_FALSE(fileExists(kFile));
}

TEST_F(SingleInterfaceTest, TheResultIsThatOfTheEvent) {
  shm->config.opModeState = 3;
  EXPECT_EQ(-1, setSingleInterfaceMode(1, 11, 12));
  EXPECT_EQ(1, shm->config.singleInterfaceMode);
}

TEST_F(AccessorsTest, AccessorsNeedTheStore) {
  dropStore();
  char buffer[256];
  uint32_t word;
  EXPECT_FAILS_WITH(SHM_EATTACH, getShmString(1, buffer, sizeof buffer));
  EXPECT_FAILS_WITH(SHM_EATTACH, setShmString(1, "x"));
  EXPECT_FAILS_WITH(SHM_EATTACH, getInterfaceName(0, buffer, 16));
  EXPECT_FAILS_WITH(SHM_EATTACH, getPhysicalInterfaceName(4, buffer, 16));
  EXPECT_FAILS_WITH(SHM_EATTACH, setInterfaceName(0, "x", 16));
  EXPECT_FAILS_WITH(SHM_EATTACH, getBridgeRouterLanWanPhysName(buffer, buffer, 1));
  EXPECT_FAILS_WITH(SHM_EATTACH, getLanWanVlanId(&word, &word, 1));
  EXPECT_FAILS_WITH(SHM_EATTACH, getShmOperationalState());
  EXPECT_FAILS_WITH(SHM_EATTACH, setShmOperationalState(1));
  EXPECT_FAILS_WITH(SHM_EATTACH, getCliOperationalState());
  EXPECT_FAILS_WITH(SHM_EATTACH, getNotificationStatus(1));
  EXPECT_FAILS_WITH(SHM_EATTACH, setNotificationStatus(1));
  EXPECT_FAILS_WITH(SHM_EATTACH, getShmSourceComponent());
  EXPECT_FAILS_WITH(SHM_EATTACH, setShmSourceComponent(1));
  EXPECT_FAILS_WITH(SHM_EATTACH, setEventSourceUsername("x"));
  EXPECT_FAILS_WITH(SHM_EATTACH, getEventSourceUsername(buffer));
  EXPECT_FAILS_WITH(SHM_EATTACH, getSingleInterfaceMode(&word, &word, &word));
  EXPECT_FAILS_WITH(SHM_EATTACH, setSingleInterfaceMode(2, 0, 0));
  makeStore();
}

}  // namespace
}  // namespace kestrove::testing
