// SPDX-License-Identifier: Apache-2.0
// Records and texts of the store handed back to the management address list: shm is the caller's to use.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <string.h>

#include "tests/support/addresses.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;

// Three entries without kernel effects, the last of version 6.
class ManagementStorePointers : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    shm->operationalState = SHM_STATE_CONFIGURATION;
    put(0, "10.1.0.1");
    put(1, "10.2.0.1");
    put(2, "fd00:3::1");
    shm->managementAddressCount = 3;
  }
  static void put(int slot, const char* text) {
    ManagementAddress& entry = at(slot);
    entry = {};
    entry.status = 2;
    entry.interfaceKind = 3;
    entry.mask = quad("255.255.255.0");
    entry.prefixLength6 = 64;
    entry.ipVersion = strchr(text, ':') ? 6 : 4;
    if (entry.ipVersion == 6) {
      setIp6(entry.address6, text);
    } else {
      entry.address = quad(text);
    }
  }
  static ManagementAddress& at(int slot) { return shm->managementAddress[slot]; }
  static std::string textAt(int slot) {
    const ManagementAddress& entry = at(slot);
    return entry.ipVersion == 6 ? ip6Text(entry.address6) : ipv4_to_a(entry.address);
  }
  static std::vector<std::string> texts() {
    std::vector<std::string> list;
    for (int i = 0; i < shm->managementAddressCount; ++i) list.push_back(textAt(i));
    return list;
  }
};

TEST_F(ManagementStorePointers, RemovingEachEntryByItself) {
  ASSERT_EQ(0, removeManagementAddr(&at(1)));
  EXPECT_THAT(texts(), ElementsAre("10.1.0.1", "fd00:3::1"));
  ASSERT_EQ(0, removeManagementAddr(&at(1)));
  EXPECT_THAT(texts(), ElementsAre("10.1.0.1"));
  ASSERT_EQ(0, removeManagementAddr(&at(0)));
  EXPECT_THAT(texts(), ElementsAre());
}

TEST_F(ManagementStorePointers, AddingAnEntryOfTheListAgain) {
  for (int slot : {0, 1, 2}) EXPECT_FAILS_WITH(SHM_EEXIST, addManagementAddr(&at(slot)));
  EXPECT_THAT(texts(), ElementsAre("10.1.0.1", "10.2.0.1", "fd00:3::1"));
}

TEST_F(ManagementStorePointers, AddingWhatLiesInTheFreeSlots) {
  put(3, "10.4.0.1");
  ASSERT_EQ(0, addManagementAddr(&at(3)));
  put(6, "fd00:7::1");
  ASSERT_EQ(0, addManagementAddr(&at(6)));
  EXPECT_THAT(texts(), ElementsAre("10.1.0.1", "10.2.0.1", "fd00:3::1", "10.4.0.1", "fd00:7::1"));
}

TEST_F(ManagementStorePointers, AddingWhatLiesHalfInTheNextSlot) {
  auto& between = *reinterpret_cast<ManagementAddress*>(&at(3).address6);
  memmove(&between, &at(0), sizeof between);
  between.address = quad("10.9.0.1");
  ASSERT_EQ(0, addManagementAddr(&between));
  EXPECT_THAT(texts(), ElementsAre("10.1.0.1", "10.2.0.1", "fd00:3::1", "10.9.0.1"));
  EXPECT_EQ(1u, at(3).status);
  EXPECT_EQ(3, at(3).interfaceKind);
}

TEST_F(ManagementStorePointers, FindingByATextOfTheStore) {
  ManagementAddress found = {};
  strcpy(shm->config.sysName, "10.2.0.1");
  EXPECT_EQ(0, findManagementAddr(shm->config.sysName, &found));
  EXPECT_EQ(quad("10.2.0.1"), found.address);
}

TEST_F(ManagementStorePointers, FindingIntoTheListAndOverTheText) {
  ASSERT_EQ(0, findManagementAddr("10.2.0.1", &at(1)));
  ASSERT_EQ(0, findManagementAddr("10.2.0.1", &at(0)));
  EXPECT_THAT(texts(), ElementsAre("10.2.0.1", "10.2.0.1", "fd00:3::1"));
  char* text = shm->config.sysName;
  strcpy(text, "fd00:3::1");
  ASSERT_EQ(0, findManagementAddr(text, reinterpret_cast<ManagementAddress*>(text)));
  EXPECT_EQ(0, memcmp(text, &at(2), sizeof at(2)));
  auto& between = *reinterpret_cast<ManagementAddress*>(&at(1).address6);  // its end is the start of the one found
  const ManagementAddress sought = at(2);
  ASSERT_EQ(0, findManagementAddr("fd00:3::1", &between));
  EXPECT_EQ(0, memcmp(&sought, &between, sizeof sought));
}

TEST_F(ManagementStorePointers, AnEntryIntoTheList) {
  ASSERT_EQ(0, getManagementAddr(1, &at(1)));
  ASSERT_EQ(0, getManagementAddr(1, &at(0)));
  EXPECT_THAT(texts(), ElementsAre("10.2.0.1", "10.2.0.1", "fd00:3::1"));
}

TEST_F(ManagementStorePointers, TheListAsTextIntoTheStore) {
  for (int slot : {0, 1, 2}) at(slot).status = 1;
  ASSERT_EQ(0, getManagementAddressList(shm->config.sysName, sizeof shm->config.sysName));
  EXPECT_STREQ(" 10.1.0.1 10.2.0.1 fd00:3::1", shm->config.sysName);
}

}  // namespace
}  // namespace kestrove::testing
