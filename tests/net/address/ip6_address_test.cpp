// SPDX-License-Identifier: Apache-2.0
// The addresses of the bridge, against a real bridge.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <fstream>
#include <string>

#include "tests/support/addresses.h"
#include "tests/support/records.h"
#include "tests/support/save_counter.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

std::string numbered(int i) { return "2001:db8::" + std::to_string(i); }

class Ip6Addresses : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    ASSERT_EQ(0, system("brctl addbr br0"));
    // A bridge without ports has no carrier, and then no address gets through duplicate detection.
    ASSERT_EQ(0, system("echo 0 > /proc/sys/net/ipv6/conf/br0/accept_dad"));
  }
  void TearDown() override {
    EXPECT_EQ(0, shm_lock_count);
    StoreTest::TearDown();
  }

  static int add(const std::string& address, uint32_t prefix = 64) {
    Ip6Address value = ip6Record(address, prefix);
    return shm_addIp6(&value);
  }
  static int remove(const std::string& address) { return removeIp6(ip6(address).data()); }
  static int edit(int index, const std::string& address) { return shm_editIp6Address(index, ip6(address).data()); }

  static std::vector<std::string> table() {
    std::vector<std::string> texts;
    for (int i = 0; i < shm->ip6Count; ++i) {
      const Ip6Address& held = shm->ip6Address[i];
      texts.push_back(ip6Text(held.address) + "/" + std::to_string(held.prefixLength));
    }
    return texts;
  }
  // Addresses of br0 but the kernel's own link-local one.
  static std::vector<std::string> bridge() {
    std::ifstream list("/proc/net/if_inet6");
    std::vector<std::string> found;
    std::string digits, index, prefix, scope, flags, name;
    while (list >> digits >> index >> prefix >> scope >> flags >> name) {
      if (name != "br0" || digits.substr(0, 4) == "fe80") continue;
      found.push_back(digits.substr(digits.size() - 4) + "/" + prefix);
    }
    return found;
  }
};

TEST_F(Ip6Addresses, AnAddressGoesIntoTheTableOntoTheBridgeAndIntoTheFile) {
  EXPECT_EQ(0, add(numbered(1), 64));
  EXPECT_EQ(0, add(numbered(2), 48));
  EXPECT_THAT(table(), ElementsAre("2001:db8::1/64", "2001:db8::2/48"));
  EXPECT_THAT(bridge(), ::testing::UnorderedElementsAre("0001/40", "0002/30"));
  EXPECT_EQ(2, getIp6Count());
  EXPECT_THAT(readFile(kConfigFile), HasSubstr("2001:db8::2"));
}

TEST_F(Ip6Addresses, SixAreHeldAndTheSeventhIsRefused) {
  for (int i = 1; i <= 6; ++i) EXPECT_EQ(0, add(numbered(i)));
  EXPECT_FAILS_WITH(SHM_EFULL, add(numbered(7)));
  EXPECT_FAILS_WITH(SHM_EFULL, add(numbered(1)));
  EXPECT_EQ(6u, bridge().size());
}

TEST_F(Ip6Addresses, AnAddressIsHeldOnceWhateverItsPrefix) {
  add(numbered(1), 64);
  EXPECT_FAILS_WITH(SHM_EEXIST, add(numbered(1), 48));
  EXPECT_THAT(table(), ElementsAre("2001:db8::1/64"));
}

TEST_F(Ip6Addresses, ConfigurationModeTouchesTheTableAlone) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_EQ(0, add(numbered(1)));
  EXPECT_THAT(table(), ElementsAre("2001:db8::1/64"));
  EXPECT_THAT(bridge(), IsEmpty());
  EXPECT_FALSE(fileExists(kConfigFile));
}

TEST_F(Ip6Addresses, DebugModeIsLikeAnyOther) {
  shm->operationalState = SHM_STATE_DEBUG;
  EXPECT_EQ(0, add(numbered(1)));
  EXPECT_THAT(bridge(), ElementsAre("0001/40"));
  EXPECT_TRUE(fileExists(kConfigFile));
}

TEST_F(Ip6Addresses, WhatTheBridgeRefusesIsNotStored) {
  EXPECT_FAILS_WITH(SHM_ESYSTEM, add(numbered(1), 129));
  ASSERT_EQ(0, system("ip link del br0"));
  EXPECT_FAILS_WITH(SHM_ESYSTEM, add(numbered(1)));
  EXPECT_THAT(table(), IsEmpty());
  EXPECT_FALSE(fileExists(kConfigFile));
}

TEST_F(Ip6Addresses, AddFoldsTheResult) {
  Ip6Address value = ip6Record(numbered(1));
  EXPECT_EQ(0, addIp6(&value));
  EXPECT_FAILS_WITH(SHM_EEXIST, addIp6(&value));
}

TEST_F(Ip6Addresses, AnEditedAddressKeepsItsPlaceAndPrefix) {
  for (int i = 1; i <= 3; ++i) add(numbered(i), 60);
  SaveCounter saves;
  EXPECT_EQ(0, edit(1, numbered(9)));
  EXPECT_EQ(1, saves.count());
  EXPECT_THAT(table(), ElementsAre("2001:db8::1/60", "2001:db8::9/60", "2001:db8::3/60"));
  EXPECT_THAT(bridge(), ::testing::UnorderedElementsAre("0001/3c", "0009/3c", "0003/3c"));
}

TEST_F(Ip6Addresses, EditingToTheSameAddressChangesNothing) {
  add(numbered(1));
  add(numbered(2));
  SaveCounter saves;
  shm_errno = 99;
  EXPECT_EQ(0, edit(1, numbered(2)));
  EXPECT_EQ(99u, shm_errno);
  EXPECT_EQ(0, saves.count());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Ip6Addresses, EditingToTheAddressOfAnotherEntryIsRefused) {
  add(numbered(1));
  add(numbered(2));
  EXPECT_FAILS_WITH(SHM_EEXIST, edit(1, numbered(1)));
  EXPECT_THAT(table(), ElementsAre("2001:db8::1/64", "2001:db8::2/64"));
}

TEST_F(Ip6Addresses, AnIndexOutOfRangeIsRefusedFirstOfAll) {
  add(numbered(1));
  for (int index : {-1, 1, 6, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
    EXPECT_FAILS_WITH(SHM_EINVAL, edit(index, numbered(1)));
    EXPECT_FAILS_WITH(SHM_EINVAL, shm_editIp6Prefix(index, 48));
    Ip6Address out = ip6Record("1::", 7);
    EXPECT_FAILS_WITH(SHM_EINVAL, getIp6TableEntry(index, &out));
    EXPECT_EQ(7u, out.prefixLength);
  }
  EXPECT_THAT(table(), ElementsAre("2001:db8::1/64"));
}

TEST_F(Ip6Addresses, AnEditedPrefixReachesTheBridge) {
  add(numbered(1), 64);
  SaveCounter saves;
  EXPECT_EQ(0, shm_editIp6Prefix(0, 48));
  EXPECT_EQ(1, saves.count());
  EXPECT_THAT(table(), ElementsAre("2001:db8::1/48"));
  EXPECT_THAT(bridge(), ElementsAre("0001/30"));
}

TEST_F(Ip6Addresses, EditsReachTheBridgeInConfigurationModeToo) {
  add(numbered(1), 64);
  shm->operationalState = SHM_STATE_CONFIGURATION;
  SaveCounter saves;
  EXPECT_EQ(0, edit(0, numbered(2)));
  EXPECT_THAT(bridge(), ElementsAre("0002/40"));
  EXPECT_EQ(0, shm_editIp6Prefix(0, 48));
  EXPECT_THAT(bridge(), ElementsAre("0002/30"));
  EXPECT_EQ(0, remove(numbered(2)));
  EXPECT_THAT(bridge(), IsEmpty());
  EXPECT_EQ(0, saves.count());
}

TEST_F(Ip6Addresses, ARefusedRemovalLeavesTheEntry) {
  add(numbered(1));
  ASSERT_EQ(0, system("ip -6 addr flush dev br0"));
  SaveCounter saves;
  EXPECT_FAILS_WITH(99, edit(0, numbered(2)));
  EXPECT_FAILS_WITH(99, shm_editIp6Prefix(0, 48));
  EXPECT_FAILS_WITH(99, remove(numbered(1)));
  EXPECT_THAT(table(), ElementsAre("2001:db8::1/64"));
  EXPECT_EQ(0, saves.count());
}

TEST_F(Ip6Addresses, ARefusedNewValueStaysStoredUnsaved) {
  add(numbered(1));
  SaveCounter saves;
  EXPECT_FAILS_WITH(SHM_ESYSTEM, shm_editIp6Prefix(0, 200));
  EXPECT_THAT(table(), ElementsAre("2001:db8::1/200"));
  EXPECT_THAT(bridge(), IsEmpty());
  EXPECT_EQ(0, saves.count());
}

TEST_F(Ip6Addresses, ARemovedAddressLeavesNoGap) {
  for (int i = 1; i <= 6; ++i) add(numbered(i));
  SaveCounter saves;
  EXPECT_EQ(0, remove(numbered(3)));
  EXPECT_EQ(1, saves.count());
  EXPECT_THAT(table(),
              ElementsAre("2001:db8::1/64", "2001:db8::2/64", "2001:db8::4/64", "2001:db8::5/64", "2001:db8::6/64"));
  EXPECT_EQ(5u, bridge().size());
  EXPECT_THAT(readFile(kConfigFile), Not(HasSubstr("2001:db8::3 ")));
  EXPECT_EQ(0, remove(numbered(6)));
  EXPECT_EQ(0, remove(numbered(1)));
  EXPECT_THAT(table(), ElementsAre("2001:db8::2/64", "2001:db8::4/64", "2001:db8::5/64"));
}

TEST_F(Ip6Addresses, WhatIsNotThereIsRefusedWithoutACode) {
  add(numbered(1));
  EXPECT_FAILS_WITH(99, remove(numbered(2)));
  EXPECT_FAILS_WITH(99, checkIp6(ip6(numbered(2)).data()));
  Ip6Address out;
  EXPECT_FAILS_WITH(99, getIp6TableEntryByAddr("2001:db8::2", &out));
  EXPECT_FAILS_WITH(99, getIp6TableEntryByAddr("no address", &out));
  EXPECT_FAILS_WITH(99, getIp6TableEntryByAddr("10.0.0.1", &out));
  EXPECT_FAILS_WITH(99, getIp6TableEntryByAddr("", &out));
}

TEST_F(Ip6Addresses, EntriesAreFoundByPositionAndByText) {
  for (int i = 1; i <= 3; ++i) add(numbered(i), static_cast<uint32_t>(60 + i));
  EXPECT_EQ(1, checkIp6(ip6(numbered(2)).data()));
  Ip6Address out = {};
  EXPECT_EQ(0, getIp6TableEntry(2, &out));
  EXPECT_EQ(63u, out.prefixLength);
  EXPECT_EQ(0, getIp6TableEntryByAddr("2001:0db8:0::0002", &out));
  EXPECT_EQ(62u, out.prefixLength);
}

TEST_F(Ip6Addresses, OfEqualEntriesTheLastIsFoundByText) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  add(numbered(1), 61);
  add(numbered(2), 62);
  shm->ip6Address[1] = ip6Record(numbered(1), 63);
  Ip6Address out = {};
  EXPECT_EQ(0, getIp6TableEntryByAddr("2001:db8::1", &out));
  EXPECT_EQ(63u, out.prefixLength);
  EXPECT_EQ(0, checkIp6(ip6(numbered(1)).data()));
}

TEST_F(Ip6Addresses, ADamagedCountStaysInTheTable) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  for (int count : {-1, 7, 0x7FFFFFFF}) {
    shm->ip6Count = count;
    shm->managementAddressCount = 5;
    EXPECT_EQ(count, getIp6Count());
    EXPECT_FAILS_WITH(SHM_EFULL, add(numbered(1)));
    EXPECT_EQ(-1, checkIp6(ip6(numbered(1)).data()));
    Ip6Address out;
    EXPECT_EQ(count < 0 ? -1 : 0, getIp6TableEntry(5, &out));
    EXPECT_FAILS_WITH(SHM_EINVAL, getIp6TableEntry(6, &out));
    EXPECT_EQ(-1, remove(numbered(1)));
    EXPECT_EQ(5, shm->managementAddressCount) << "the word behind the count";
  }
}

TEST_F(Ip6Addresses, TheCheckAttachesWithoutTheLock) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  add(numbered(1));
  shm_detach();
  shm = nullptr;
  EXPECT_EQ(0, checkIp6(ip6(numbered(1)).data()));
}

TEST_F(Ip6Addresses, WithoutAStoreNothingWorks) {
  dropStore();
  Ip6Address out;
  EXPECT_FAILS_WITH(SHM_EATTACH, add(numbered(1)));
  EXPECT_FAILS_WITH(SHM_EATTACH, edit(0, numbered(1)));
  EXPECT_FAILS_WITH(SHM_EATTACH, shm_editIp6Prefix(0, 1));
  EXPECT_FAILS_WITH(SHM_EATTACH, remove(numbered(1)));
  EXPECT_FAILS_WITH(SHM_EATTACH, checkIp6(ip6(numbered(1)).data()));
  EXPECT_FAILS_WITH(SHM_EATTACH, getIp6TableEntry(0, &out));
  EXPECT_FAILS_WITH(SHM_EATTACH, getIp6TableEntryByAddr("::1", &out));
  EXPECT_FAILS_WITH(SHM_EATTACH, getIp6Count());
}

TEST_F(Ip6Addresses, NullIsRefused) {
  Ip6Address out;
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_addIp6(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, addIp6(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_editIp6Address(0, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, removeIp6(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, checkIp6(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getIp6TableEntry(0, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getIp6TableEntryByAddr(nullptr, &out));
  EXPECT_FAILS_WITH(SHM_EINVAL, getIp6TableEntryByAddr("::1", nullptr));
}

}  // namespace
}  // namespace kestrove::testing
