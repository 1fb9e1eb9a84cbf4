// SPDX-License-Identifier: Apache-2.0
// The management address list, on real interfaces.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <stdio.h>
#include <stdlib.h>

#include "tests/support/addresses.h"
#include "tests/support/files.h"
#include "tests/support/kernel.h"
#include "tests/support/records.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

enum : uint32_t { kApplied = 1, kKept = 2 };
enum : uint32_t { kDual = 0, kSingle = 1, kPolicyRouting = 2 };
enum : int { kLan = 0, kWan = 1, kManagement = 3, kBridgeKind = 4, kBase = 5 };

ManagementAddress entry4(const char* address, const char* mask = "255.255.255.0", int kind = kWan) {
  return managementRecord(address, kind, mask);
}

ManagementAddress entry6(const char* address, uint32_t prefix = 64, int kind = kWan) {
  return management6Record(address, kind, prefix);
}

class ManagementList : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    run("ip addr flush dev eth0; ip link set eth0 down; ip link set eth1 up; ip link set eth2 up");
    run("echo 0 > /proc/sys/net/ipv6/conf/eth0/accept_dad");
    strcpy(shm->config.lanInterfaceName, "eth1");
    strcpy(shm->config.wanInterfaceName, "eth0");
    strcpy(shm->config.managementInterfaceName, "eth2");
    strcpy(shm->config.bridgeRouterPhysicalName, "eth1");
    shm->config.opModeState = kSingle;
  }
  void TearDown() override {
    EXPECT_EQ(0, shm_lock_count);
    StoreTest::TearDown();
  }

  void inConfigurationMode() { shm->operationalState = SHM_STATE_CONFIGURATION; }
  static int add(ManagementAddress entry) { return addManagementAddr(&entry); }
  static int remove(ManagementAddress entry, uint32_t status = kApplied) {
    entry.status = status;
    return removeManagementAddr(&entry);
  }
  static std::string list(int size = 512) {
    char buffer[512];
    EXPECT_EQ(0, getManagementAddressList(buffer, size));
    return buffer;
  }
  static std::string addresses(const char* name) { return outputOf(std::string("ip -br addr show dev ") + name); }
  static int count() { return shm->managementAddressCount; }
};

TEST_F(ManagementList, AnIpv4AddressGoesOntoItsInterface) {
  ManagementAddress entry = entry4("10.1.2.3");
  EXPECT_EQ(0, addManagementAddr(&entry));
  EXPECT_EQ(uint32_t{kApplied}, entry.status) << "the caller learns the status";
  EXPECT_EQ(0, memcmp(&entry, &shm->managementAddress[0], sizeof entry));
  EXPECT_EQ(uint32_t{SHM_ENOENT}, shm_errno) << "what freshening an empty table leaves";
  EXPECT_THAT(addresses("eth0"), HasSubstr("10.1.2.3/24"));
  EXPECT_THAT(outputOf("ip link show eth0"), HasSubstr("UP"));
  EXPECT_THAT(outputOf("ip addr show eth0"), HasSubstr("10.1.2.3/24 brd 10.1.2.255 scope global eth0"));
  EXPECT_THAT(readFile(kConfigFile), HasSubstr("10.1.2.3"));
}

TEST_F(ManagementList, AnIpv6AddressGoesOntoItsInterface) {
  EXPECT_EQ(0, add(entry6("2001:db8::3", 48)));
  EXPECT_THAT(addresses("eth0"), HasSubstr("2001:db8::3/48"));
  EXPECT_THAT(readFile(kConfigFile), HasSubstr("2001:db8::3"));
}

TEST_F(ManagementList, SevenAreHeldAndTheEighthIsRefused) {
  for (int i = 1; i <= SHM_MANAGEMENT_ADDRESSES; ++i) {
    EXPECT_EQ(0, add(entry4(("10." + std::to_string(i) + ".0.1").c_str())));
  }
  ManagementAddress eighth = entry4("10.8.0.1");
  eighth.status = 77;
  EXPECT_FAILS_WITH(SHM_EFULL, addManagementAddr(&eighth));
  EXPECT_EQ(77u, eighth.status);
  EXPECT_FAILS_WITH(SHM_EFULL, add(entry4("10.1.0.1")));  // before the duplicate is looked for
}

TEST_F(ManagementList, AnAddressInTheSubnetOfAnEntryIsRefused) {
  EXPECT_EQ(0, add(entry4("10.1.2.3")));
  EXPECT_FAILS_WITH(SHM_EEXIST, add(entry4("10.1.2.200")));
  EXPECT_EQ(0, add(entry4("10.1.3.200")));
  EXPECT_EQ(2, count());
}

TEST_F(ManagementList, AnIpv6AddressIsComparedWithEntriesOfEveryFamily) {
  inConfigurationMode();
  ManagementAddress odd = entry6("2001:db8::3");
  odd.ipVersion = 4;
  odd.mask = 0xFFFFFFFF;
  EXPECT_EQ(0, add(odd));
  EXPECT_FAILS_WITH(SHM_EEXIST, add(entry6("2001:db8::3")));
  EXPECT_EQ(0, add(entry6("2001:db8::4"))) << "the same subnet is no matter";
}

TEST_F(ManagementList, AnUnknownFamilyLeavesItsCodeAndIsAddedAsIpv4) {
  ManagementAddress odd = entry4("10.1.2.3");
  odd.ipVersion = 5;
  inConfigurationMode();
  shm_errno = 99;
  EXPECT_EQ(0, addManagementAddr(&odd));
  EXPECT_EQ(uint32_t{SHM_EINVAL}, shm_errno);
  EXPECT_EQ(0, addManagementAddr(&odd)) << "and no duplicate is looked for";
  shm->operationalState = SHM_STATE_OPERATIONAL;
  ManagementAddress other = entry4("10.5.2.3");
  other.ipVersion = 0;
  EXPECT_EQ(0, addManagementAddr(&other));
  EXPECT_THAT(addresses("eth0"), HasSubstr("10.5.2.3/24"));
  EXPECT_EQ(3, count());
}

TEST_F(ManagementList, ConfigurationModeTouchesTheListAlone) {
  inConfigurationMode();
  shm_errno = 99;
  EXPECT_EQ(0, add(entry4("10.1.2.3")));
  EXPECT_EQ(99u, shm_errno);
  EXPECT_EQ(1, count());
  EXPECT_THAT(addresses("eth0"), Not(HasSubstr("10.1.2.3")));
  EXPECT_FALSE(fileExists(kConfigFile));
}

TEST_F(ManagementList, AnInterfaceThatTheModeDoesNotUseKeepsTheAddressOnly) {
  shm->config.opModeState = kPolicyRouting;
  ManagementAddress entry = entry6("2001:db8::3", 64, kBridgeKind);
  EXPECT_EQ(0, addManagementAddr(&entry));
  EXPECT_EQ(uint32_t{kKept}, entry.status);
  EXPECT_EQ("", list());
  EXPECT_THAT(outputOf("ip addr"), Not(HasSubstr("2001:db8::3")));
  EXPECT_THAT(readFile(kConfigFile), HasSubstr("2001:db8::3"));
}

TEST_F(ManagementList, TheStatusFollowsModeKindAndProduct) {
  struct Row {
    uint32_t mode;
    uint32_t product;
    int kind;
    int status;
  };
  const Row rows[] = {{kDual, 1, kLan, 2},
                      {kDual, 1, kBase, 2},
                      {kDual, 9, kLan, 1},
                      {kDual, 9, kBase, 1},
                      {kDual, 8, kBase, 2},
                      {kDual, 10, kBase, 2},
                      {kSingle, 1, kLan, 1},
                      {kSingle, 1, kBase, 1},
                      {kPolicyRouting, 1, kLan, 1},
                      {kPolicyRouting, 1, kBase, 1},
                      {kDual, 1, kBridgeKind, 1},
                      {kSingle, 1, kBridgeKind, 1},
                      {kPolicyRouting, 1, kBridgeKind, 2},
                      {kPolicyRouting, 9, kBridgeKind, 2},
                      {3, 1, kBridgeKind, 1},
                      {kDual, 1, kWan, 1},
                      {kPolicyRouting, 1, kWan, 1},
                      {kDual, 1, kManagement, 1},
                      {kDual, 1, 2, 1},
                      {kDual, 1, -1, 1},
                      {kPolicyRouting, 1, 6, 1}};
  inConfigurationMode();
  for (const Row& row : rows) {
    shm->config.opModeState = row.mode;
    shm->config.productId = row.product;
    shm->managementAddressCount = 0;
    EXPECT_EQ(row.status, validateInterfaceStatus(row.kind)) << row.mode << " " << row.product << " " << row.kind;
    ManagementAddress entry = entry4("10.1.2.3", "255.255.255.0", row.kind);
    EXPECT_EQ(0, addManagementAddr(&entry));
    EXPECT_EQ(static_cast<uint32_t>(row.status), entry.status);
  }
}

TEST_F(ManagementList, WhatTheInterfaceRefusesIsNotAdded) {
  strcpy(shm->config.wanInterfaceName, "nothere");
  for (ManagementAddress entry : {entry4("10.1.2.3"), entry6("2001:db8::3")}) {
    EXPECT_FAILS_WITH(SHM_ESYSTEM, addManagementAddr(&entry));
    EXPECT_EQ(uint32_t{kKept}, entry.status);
  }
  EXPECT_EQ(0, count());
  EXPECT_FALSE(fileExists(kConfigFile));
}

TEST_F(ManagementList, AKindWithoutANameIsARefusal) {
  for (int kind : {2, 6, -1}) {
    ManagementAddress entry = entry4("10.1.2.3", "255.255.255.0", kind);
    EXPECT_FAILS_WITH(SHM_ESYSTEM, addManagementAddr(&entry));
    EXPECT_EQ(uint32_t{kKept}, entry.status);
  }
  EXPECT_EQ(0, count());
}

TEST_F(ManagementList, RoutesFollowANewAddress) {
  RouteEntry route = {quad("20.0.0.0"), quad("255.0.0.0"), quad("10.1.2.254"), 3, 0, 0};
  EXPECT_EQ(0, addUserRoute(&route));
  EXPECT_EQ(1u, shm->routes.slot[0].status);
  EXPECT_EQ(0, add(entry4("10.1.2.3")));
  EXPECT_EQ(3u, shm->routes.slot[0].status);
  EXPECT_THAT(outputOf("ip route show 20.0.0.0/8"), HasSubstr("via 10.1.2.254 dev eth0"));
  EXPECT_THAT(readFile(kConfigFile), HasSubstr("10.1.2.254         3 "));
}

TEST_F(ManagementList, RemovingTakesTheAddressOff) {
  add(entry4("10.1.2.3"));
  add(entry4("10.1.3.3"));
  add(entry6("2001:db8::3"));
  shm_errno = 99;
  EXPECT_EQ(0, remove(entry4("10.1.2.3")));
  EXPECT_EQ(uint32_t{SHM_ENOENT}, shm_errno);
  EXPECT_THAT(addresses("eth0"), Not(HasSubstr("10.1.2.3/")));
  EXPECT_EQ(" 10.1.3.3 2001:db8::3", list());
  EXPECT_EQ(0, remove(entry6("2001:db8::3")));
  EXPECT_THAT(addresses("eth0"), Not(HasSubstr("2001:db8::3/")));
  EXPECT_EQ(1, count());
  EXPECT_THAT(readFile(kConfigFile), Not(HasSubstr("2001:db8::3")));
}

TEST_F(ManagementList, AnIpv4EntryIsFoundByItsSubnetAndTheCallersAddressIsTakenOff) {
  add(entry4("10.1.2.3"));
  run("ip addr add 10.1.2.77/24 dev eth0");
  EXPECT_EQ(0, remove(entry4("10.1.2.77")));
  EXPECT_EQ(0, count());
  EXPECT_THAT(addresses("eth0"), Not(HasSubstr("10.1.2.77")));
  EXPECT_THAT(addresses("eth0"), HasSubstr("10.1.2.3/24"));
}

TEST_F(ManagementList, TheCallersStatusAndKindDecideWhatIsTakenOff) {
  add(entry4("10.1.2.3"));
  EXPECT_EQ(0, remove(entry4("10.1.2.3"), kKept));
  EXPECT_EQ(0, count());
  EXPECT_THAT(addresses("eth0"), HasSubstr("10.1.2.3/24"));
  add(entry4("10.1.3.3"));
  EXPECT_EQ(0, remove(entry4("10.1.3.3", "255.255.255.0", kLan)))
      << "another interface; the kernel's word is not heard";
  EXPECT_THAT(addresses("eth0"), HasSubstr("10.1.3.3/24"));
}

TEST_F(ManagementList, ARefusedRemovalLeavesTheList) {
  add(entry4("10.1.2.3"));
  add(entry6("2001:db8::3"));
  ManagementAddress elsewhere = entry4("10.1.2.3", "255.255.255.0", 2);
  EXPECT_FAILS_WITH(SHM_ESYSTEM, remove(elsewhere));
  run("ip addr del 2001:db8::3/64 dev eth0");
  EXPECT_FAILS_WITH(SHM_ESYSTEM, remove(entry6("2001:db8::3")));
  EXPECT_EQ(2, count());
}

TEST_F(ManagementList, RemovingAnIpv6EntryInConfigurationModeShowsTheCodeOfItsSearch) {
  add(entry6("2001:db8::3"));
  inConfigurationMode();
  shm_errno = 99;
  EXPECT_EQ(0, remove(entry6("2001:db8::3")));
  EXPECT_EQ(uint32_t{SHM_EEXIST}, shm_errno);
  EXPECT_THAT(addresses("eth0"), Not(HasSubstr("2001:db8::3"))) << "the interface is touched in this mode too";
  EXPECT_THAT(readFile(kConfigFile), HasSubstr("2001:db8::3")) << "the file is not";
}

TEST_F(ManagementList, WhatIsNotThereIsRefusedWithoutACode) {
  add(entry4("10.1.2.3"));
  EXPECT_FAILS_WITH(99, remove(entry4("10.1.3.3")));
  EXPECT_FAILS_WITH(99, remove(entry6("2001:db8::3")));
  ManagementAddress odd = entry4("10.1.2.3");
  odd.ipVersion = 5;
  EXPECT_FAILS_WITH(SHM_EINVAL, remove(odd));
  EXPECT_EQ(1, count());
}

TEST_F(ManagementList, RemovingLeavesNoGap) {
  inConfigurationMode();
  for (int i = 1; i <= 7; ++i) add(entry6(("2001:db8::" + std::to_string(i)).c_str()));
  for (int i : {4, 7, 1}) EXPECT_EQ(0, remove(entry6(("2001:db8::" + std::to_string(i)).c_str()), kKept));
  EXPECT_EQ(" 2001:db8::2 2001:db8::3 2001:db8::5 2001:db8::6", list());
}

TEST_F(ManagementList, AnAddressIsFoundByItsText) {
  inConfigurationMode();
  add(entry4("10.1.2.3"));
  add(entry6("2001:db8::3", 48));
  ManagementAddress out = {};
  EXPECT_EQ(0, findManagementAddr("2001:0db8::0003", &out));
  EXPECT_EQ(48u, out.prefixLength6);
  EXPECT_EQ(0, findManagementAddr("10.1.2.3", &out));
  EXPECT_EQ(4u, out.ipVersion);
}

TEST_F(ManagementList, TextsAreComparedWithEntriesOfTheirFamilyOnly) {
  inConfigurationMode();
  ManagementAddress both = entry6("2001:db8::3");
  both.address = quad("10.1.2.3");
  add(both);
  ManagementAddress out = {};
  EXPECT_NE(0, findManagementAddr("10.1.2.3", &out)) << "an IPv6 entry has no IPv4 address";
  EXPECT_EQ(0, findManagementAddr("2001:db8::3", &out));
  shm->managementAddress[0].ipVersion = 5;
  EXPECT_EQ(0, findManagementAddr("10.1.2.3", &out)) << "every other family counts as IPv4";
  EXPECT_NE(0, findManagementAddr("2001:db8::3", &out));
}

TEST_F(ManagementList, WhatIsNotFoundLeavesTheOutput) {
  inConfigurationMode();
  ManagementAddress out = entry4("1.2.3.4");
  EXPECT_EQ(0, findManagementAddr("10.1.2.3", &out)) << "an empty list is a success";
  EXPECT_EQ(quad("1.2.3.4"), out.address);
  add(entry4("10.1.2.3"));
  for (const char* text : {"10.1.2.4", "2001:db8::3"}) {
    shm_errno = 99;
    EXPECT_NE(0, findManagementAddr(text, &out));
    EXPECT_EQ(99u, shm_errno);
  }
  EXPECT_EQ(quad("1.2.3.4"), out.address);
}

TEST_F(ManagementList, TextThatIsNoAddressIsRefused) {
  ManagementAddress out = {};
  for (const char* text : {"", "10.1.2", "10.1.2.3.4", "10.1.2.3 ", "2001:db8::zz", "eth0"}) {
    EXPECT_FAILS_WITH(SHM_EINVAL, findManagementAddr(text, &out));
  }
}

TEST_F(ManagementList, EntriesAreReadByIndex) {
  inConfigurationMode();
  add(entry4("10.1.2.3"));
  add(entry4("10.1.3.3"));
  EXPECT_EQ(2, getManagementAddrCount());
  ManagementAddress out = {};
  EXPECT_EQ(0, getManagementAddr(1, &out));
  EXPECT_EQ(quad("10.1.3.3"), out.address);
  for (int index : {-1, 2, 7, 0x7FFFFFFF}) EXPECT_FAILS_WITH(SHM_EINVAL, getManagementAddr(index, &out));
}

TEST_F(ManagementList, TheListHasTheAppliedAddresses) {
  inConfigurationMode();
  EXPECT_EQ("", list());
  add(entry4("10.0.0.1"));
  add(entry4("10.0.1.1"));
  add(entry6("fd00::1"));
  shm->managementAddress[1].status = kKept;
  EXPECT_EQ(" 10.0.0.1 fd00::1", list());
  shm->managementAddress[0].ipVersion = 9;
  EXPECT_EQ(" 10.0.0.1 fd00::1", list()) << "every other family is IPv4";
}

TEST_F(ManagementList, TheListStopsWhereTheBufferDoes) {
  inConfigurationMode();
  for (const char* address : {"10.0.0.1", "100.100.100.100", "9.0.0.1"}) add(entry4(address));
  EXPECT_EQ(" 10.0.0.1", list(16)) << "the third would fit, but the second ends it";
  EXPECT_EQ(" 10.0.0.1", list(25)) << "9 and 15 characters reach 25 - 1";
  EXPECT_EQ(" 10.0.0.1 100.100.100.100", list(26));
  EXPECT_EQ(" 10.0.0.1 100.100.100.100", list(33));
  EXPECT_EQ(" 10.0.0.1 100.100.100.100 9.0.0.1", list(34));
}

TEST_F(ManagementList, ASmallBufferIsRefusedUntouched) {
  char buffer[16] = "untouched";
  for (int size : {15, 0, -1}) {
    clearSyslog();
    EXPECT_EQ(-1, getManagementAddressList(buffer, size));
    EXPECT_THAT(syslogLines(), ElementsAre("err: getManagementAddressList: Buffer size too small"));
  }
  EXPECT_STREQ("untouched", buffer);
  EXPECT_EQ(0, getManagementAddressList(buffer, 16));
  EXPECT_STREQ("", buffer);
}

TEST_F(ManagementList, ADamagedCountStaysInTheList) {
  inConfigurationMode();
  add(entry4("10.0.0.1"));
  for (int damaged : {8, 0x7FFFFFFF, -1}) {
    shm->managementAddressCount = damaged;
    memset(shm->reserved8, 0x11, sizeof shm->reserved8);
    ManagementAddress out;
    EXPECT_EQ(damaged, getManagementAddrCount());
    EXPECT_FAILS_WITH(SHM_EINVAL, getManagementAddr(7, &out));
    EXPECT_FAILS_WITH(SHM_EFULL, add(entry4("11.0.0.1")));
    findManagementAddr("172.16.0.1", &out);
    remove(entry6("2001:db8::99"));
    char buffer[64];
    EXPECT_EQ(0, getManagementAddressList(buffer, sizeof buffer));
    EXPECT_EQ(0x11, shm->reserved8[0]);
  }
}

TEST_F(ManagementList, WithoutAStoreNothingWorks) {
  dropStore();
  ManagementAddress entry = entry4("10.1.2.3");
  EXPECT_FAILS_WITH(SHM_EATTACH, addManagementAddr(&entry));
  EXPECT_THAT(syslogLines(), Contains("debug: shm_lock failed"));
  EXPECT_FAILS_WITH(SHM_EATTACH, removeManagementAddr(&entry));
  EXPECT_FAILS_WITH(SHM_EATTACH, findManagementAddr("10.1.2.3", &entry));
  EXPECT_FAILS_WITH(SHM_EATTACH, getManagementAddr(0, &entry));
  EXPECT_FAILS_WITH(SHM_EATTACH, getManagementAddrCount());
  EXPECT_FAILS_WITH(SHM_EATTACH, validateInterfaceStatus(0));
  char buffer[32] = "emptied";
  EXPECT_FAILS_WITH(SHM_EATTACH, getManagementAddressList(buffer, sizeof buffer));
  EXPECT_STREQ("", buffer);
}

TEST_F(ManagementList, NullIsRefused) {
  ManagementAddress entry = {};
  EXPECT_FAILS_WITH(SHM_EINVAL, addManagementAddr(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, removeManagementAddr(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, findManagementAddr(nullptr, &entry));
  EXPECT_FAILS_WITH(SHM_EINVAL, findManagementAddr("10.1.2.3", nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getManagementAddr(0, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getManagementAddressList(nullptr, 100));
}

TEST_F(ManagementList, TheReadersRecordStartsEmpty) {
  const ManagementAddress empty = {};
  EXPECT_EQ(0, memcmp(&empty, &manAddrEnt, sizeof empty));
}

}  // namespace
}  // namespace kestrove::testing
