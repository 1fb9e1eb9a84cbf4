// SPDX-License-Identifier: Apache-2.0
// Fields of the store, which every program can reach, as values, texts and outputs of the accessors.
#include <string.h>

#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

class AccessorPointers : public StoreTest {
 protected:
  ConfigRecord& config() { return shm->config; }
};

TEST_F(AccessorPointers, TextSetFromAPartOfItself) {
  strcpy(config().sysName, "0123456789");
  EXPECT_EQ(0, setShmString(1, config().sysName));
  EXPECT_STREQ("0123456789", config().sysName);
  EXPECT_EQ(0, setShmString(1, config().sysName + 3));
  EXPECT_EQ(0, memcmp("3456789\0\0\0", config().sysName, 11)) << "the rest of the field is empty";
  EXPECT_EQ(0, setShmString(2, config().sysName));
  EXPECT_STREQ("3456789", config().sysLocation);
}

TEST_F(AccessorPointers, LongTextSetFromAPartOfItself) {
  for (int i = 0; i < 255; ++i) config().sysName[i] = static_cast<char>('a' + i % 26);
  const std::string text = config().sysName;
  EXPECT_EQ(0, setShmString(1, config().sysName + 1));
  EXPECT_EQ(text.substr(1), config().sysName);
}

TEST_F(AccessorPointers, TextGivenIntoItsOwnField) {
  strcpy(config().sysName, "0123456789");
  EXPECT_EQ(0, getShmString(1, config().sysName, 256));
  EXPECT_STREQ("0123456789", config().sysName);
  EXPECT_EQ(0, getShmString(1, config().sysName + 3, 256));
  EXPECT_STREQ("0120123456789", config().sysName);
}

TEST_F(AccessorPointers, NameStampedOnEvents) {
  strcpy(shm->eventSourceUsername, "administrator");
  EXPECT_EQ(0, setEventSourceUsername(shm->eventSourceUsername + 3));
  EXPECT_STREQ("inistrator", shm->eventSourceUsername);
  EXPECT_EQ(0, getEventSourceUsername(shm->eventSourceUsername + 2));
  EXPECT_STREQ("ininistrator", shm->eventSourceUsername);
}

TEST_F(AccessorPointers, InterfaceNames) {
  strcpy(config().lanInterfaceName, "eth1.100");
  EXPECT_EQ(0, setInterfaceName(0, config().lanInterfaceName + 3, 16));
  EXPECT_STREQ("1.100", config().lanInterfaceName);
  EXPECT_EQ(0, setInterfaceName(1, config().lanInterfaceName, 16));
  EXPECT_STREQ("1.100", config().wanInterfaceName);
  EXPECT_EQ(0, getInterfaceName(0, config().lanInterfaceName + 1, 15));
  EXPECT_STREQ("11.100", config().lanInterfaceName);
  strcpy(config().physicalLanInterfaceName, "eth7");
  EXPECT_EQ(0, getPhysicalInterfaceName(0, config().physicalLanInterfaceName, 16));
  EXPECT_STREQ("eth7", config().physicalLanInterfaceName);
}

// Each output takes what the store held before the call.
TEST_F(AccessorPointers, OutputsThatAreTheFieldsOfOthers) {
  strcpy(config().bridgeRouterPhysicalName, "base");
  strcpy(config().physicalLanInterfaceName, "lan");
  EXPECT_EQ(0, getBridgeRouterLanWanPhysName(config().physicalLanInterfaceName, config().bridgeRouterPhysicalName, 1));
  EXPECT_STREQ("lan", config().bridgeRouterPhysicalName);
  EXPECT_STREQ("base", config().physicalLanInterfaceName);
  config().lanVlanId = 11;
  config().wanVlanId = 12;
  EXPECT_EQ(0, getLanWanVlanId(&config().wanVlanId, &config().lanVlanId, 1));
  EXPECT_EQ(12u, config().lanVlanId);
  EXPECT_EQ(11u, config().wanVlanId);
  config().singleInterfaceMode = 1;
  uint32_t wan = 0;
  EXPECT_EQ(0, getSingleInterfaceMode(&config().lanVlanId, &config().wanVlanId, &wan));
  EXPECT_EQ(1u, config().lanVlanId);
  EXPECT_EQ(12u, config().wanVlanId);
  EXPECT_EQ(11u, wan);
}

TEST_F(AccessorPointers, NumbersFromAndIntoTheStore) {
  config().wanLinkRate = 2000000;
  EXPECT_EQ(0, getKestroveConfigItem(2, &config().lanLinkRate));
  EXPECT_EQ(2000000u, config().lanLinkRate);
  config().lanIpAddress = 0x0101010a;
  config().wanIpAddress = 0x0202020a;
  EXPECT_EQ(0, setNetworkConfigItem(4, &config().wanIpAddress, 0, "--"));
  EXPECT_EQ(0x0202020au, config().lanIpAddress);
  EXPECT_EQ(0, getNetworkConfigItem(7, &config().lanGateway));
  EXPECT_EQ(0x0202020au, config().lanGateway);
}

TEST_F(AccessorPointers, UserOfAnEventWhoStandsInTheLog) {
  ASSERT_EQ(0, logEvent(24, 3, "administrator"));
  shm->eventLog.writeIndex = 0;
  config().compression = SHM_OFF;
  EXPECT_EQ(0, setKestroveConfigItem(9, SHM_ON, 3, shm->eventLog.record[0].userName + 3));
  EXPECT_STREQ("inistrator", shm->eventLog.record[0].userName);
}

TEST_F(AccessorPointers, VersionsAndLogIns) {
  strcpy(config().kestroveFullVersion, "4.1.10.5");
  EXPECT_EQ(0, getFullVersionNumber(config().kestroveFullVersion + 2, 20));
  EXPECT_STREQ("4.4.1.10.5", config().kestroveFullVersion);
  UserAccount account = {};
  strcpy(account.username, "alice");
  ASSERT_EQ(0, addUser(&account, nullptr));
  EXPECT_EQ(0, setLastLoginTimeStamp(config().users[0].username));
  EXPECT_EQ(config().users[0].lastLoginSeconds, getLastLoginTimeStamp(config().users[0].username));
  EXPECT_NE(0, config().users[0].lastLoginSeconds);
}

TEST_F(AccessorPointers, MarksOfChangesFetchedIntoTheStore) {
  shm->pendingChanges = 0x81;
  EXPECT_EQ(0, receiveKestroveEvent(&shm->config.item38Value));
  EXPECT_EQ(0x81u, shm->config.item38Value);
  EXPECT_EQ(0u, shm->pendingChanges);
}

}  // namespace
}  // namespace kestrove::testing
