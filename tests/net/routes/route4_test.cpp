// SPDX-License-Identifier: Apache-2.0
// What the IPv4 table has for itself: masks, order, local gateways.
#include <gmock/gmock.h>

#include <algorithm>

#include "tests/net/routes/routes_fixture.h"
#include "tests/support/files.h"
#include "tests/support/records.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;

RouteEntry route(const char* destination, const char* mask, const char* gateway = "192.168.5.254",
                 uint32_t status = kDisabled) {
  return routeRecord(destination, mask, gateway, status);
}

class Route4 : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    shm->operationalState = SHM_STATE_CONFIGURATION;
  }
  static int add(const char* destination, const char* mask) {
    RouteEntry entry = route(destination, mask);
    return addUserRoute(&entry);
  }
  static std::vector<std::string> destinations() {
    std::vector<std::string> texts;
    RouteEntry entry = {};
    for (int result = getFirstRouteTableEntry(&entry); result == 0;
         result = getNextRouteTableEntry(entry.destination, entry.netmask, &entry)) {
      texts.emplace_back(ipv4_to_a(entry.destination));
    }
    return texts;
  }
  static void own(int index, uint32_t version, const char* address, const char* mask) {
    ManagementAddress& entry = shm->managementAddress[index];
    entry.ipVersion = version;
    entry.address = quad(address);
    entry.mask = quad(mask);
    shm->managementAddressCount = index + 1;
  }
};

TEST_F(Route4, LongerPrefixesStandFirst) {
  const char* nets[][2] = {{"10.0.0.0", "255.0.0.0"}, {"10.1.0.0", "255.255.0.0"}, {"10.1.2.0", "255.255.255.0"}};
  int order[] = {0, 1, 2};
  do {
    shm->routes.head = 0;
    for (RouteEntry& slot : shm->routes.slot) slot.inUse = slot.next = SHM_NO_SLOT;
    for (int i : order) EXPECT_EQ(0, add(nets[i][0], nets[i][1]));
    EXPECT_THAT(destinations(), ElementsAre("10.1.2.0", "10.1.0.0", "10.0.0.0"));
  } while (std::next_permutation(std::begin(order), std::end(order)));
}

TEST_F(Route4, AmongEqualMasksTheLastByteOfTheAddressCountsMost) {
  for (const char* net : {"10.1.0.0", "10.0.1.0", "11.0.1.0", "9.255.0.0"}) add(net, "255.255.255.0");
  EXPECT_THAT(destinations(), ElementsAre("11.0.1.0", "10.0.1.0", "9.255.0.0", "10.1.0.0"));
}

TEST_F(Route4, TheSameNetWithAnotherMaskIsAnotherRoute) {
  EXPECT_EQ(0, add("10.0.0.0", "255.0.0.0"));
  EXPECT_EQ(0, add("10.0.0.0", "255.255.0.0"));
  EXPECT_EQ(0, add("0.0.0.0", "0.0.0.0"));
  EXPECT_THAT(destinations(), ElementsAre("10.0.0.0", "10.0.0.0", "0.0.0.0"));
}

TEST_F(Route4, AMaskWithHolesIsRefused) {
  for (const char* mask : {"255.0.255.0", "0.255.255.255", "255.255.255.253", "128.128.0.0"}) {
    EXPECT_FAILS_WITH(SHM_EMASK, add("10.0.0.0", mask));
  }
  RouteEntry out;
  EXPECT_FAILS_WITH(SHM_ENOENT, getFirstRouteTableEntry(&out));
  EXPECT_EQ(0, shm_lock_count);
}

// The mask is looked at before the mode and before the old route.
TEST_F(Route4, ReplacingByAMaskWithHolesIsRefusedFirstOfAll) {
  RouteEntry holes = route("10.0.0.0", "255.0.255.0");
  EXPECT_FAILS_WITH(SHM_EMASK, replaceUserRoute(quad("1.0.0.0"), quad("255.0.0.0"), &holes, 0, "--"));
  shm->operationalState = SHM_STATE_DEBUG;
  add("10.0.0.0", "255.0.0.0");
  EXPECT_FAILS_WITH(SHM_EMASK, replaceUserRoute(quad("10.0.0.0"), quad("255.0.0.0"), &holes, 0, "--"));
  EXPECT_THAT(destinations(), ElementsAre("10.0.0.0"));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Route4, AStoredMaskWithHolesIsLeftAloneByFreshening) {
  add("10.0.0.0", "255.0.0.0");
  add("20.0.0.0", "255.0.0.0");
  shm->routes.slot[0].netmask = quad("255.0.0.128");
  shm->operationalState = SHM_STATE_DEBUG;
  EXPECT_EQ(0, freshenRouteTable(0, "--"));
  EXPECT_EQ(kDisabled, shm->routes.slot[0].status);
}

TEST_F(Route4, LocalIsTheFirstIpv4EntryWhoseSubnetHoldsTheAddress) {
  own(0, 6, "10.0.0.1", "255.0.0.0");
  own(1, 4, "192.168.5.1", "255.255.255.0");
  own(2, 4, "192.168.0.1", "255.255.0.0");
  EXPECT_EQ(1, v4AddressIsLocal(quad("192.168.5.254")));
  EXPECT_EQ(2, v4AddressIsLocal(quad("192.168.6.1")));
  EXPECT_EQ(-1, v4AddressIsLocal(quad("10.0.0.2"))) << "an IPv6 entry has no IPv4 subnet";
  EXPECT_EQ(-1, v4AddressIsLocal(quad("172.16.0.1")));
  own(3, 5, "172.16.0.2", "255.255.0.0");
  EXPECT_EQ(-1, v4AddressIsLocal(quad("172.16.0.1"))) << "nor has one of another family";
}

TEST_F(Route4, LocalReadsTheManagementListOnly) {
  shm->config.lanIpAddress = quad("192.168.5.1");
  shm->config.lanIpAddressMask = quad("255.255.255.0");
  shm->config.managementAddress = quad("192.168.5.2");
  shm->config.managementAddressMask = quad("255.255.255.0");
  EXPECT_EQ(-1, v4AddressIsLocal(quad("192.168.5.254")));
}

TEST_F(Route4, LocalLooksAtNoMoreEntriesThanTheListHas) {
  for (int i = 0; i < SHM_MANAGEMENT_ADDRESSES; ++i) own(i, 4, "10.0.0.1", "255.255.255.0");
  shm->managementAddressCount = 0x7FFFFFFF;
  EXPECT_EQ(-1, v4AddressIsLocal(quad("11.0.0.1")));
  EXPECT_EQ(0, v4AddressIsLocal(quad("10.0.0.7")));
  shm->managementAddressCount = -1;
  EXPECT_EQ(-1, v4AddressIsLocal(quad("10.0.0.7")));
  shm->managementAddressCount = 0;
  EXPECT_EQ(-1, v4AddressIsLocal(quad("10.0.0.7")));
}

TEST_F(Route4, LocalAttachesWithoutTheLock) {
  own(0, 4, "10.0.0.1", "255.255.255.0");
  shm_detach();
  shm = nullptr;
  EXPECT_EQ(0, v4AddressIsLocal(quad("10.0.0.7")));
  EXPECT_EQ(0, shm_lock_count);
  dropStore();
  EXPECT_FAILS_WITH(SHM_EATTACH, v4AddressIsLocal(quad("10.0.0.7")));
}

TEST_F(Route4, AddingAllToAnEmptyTableIsASuccessWithACode) {
  shm_errno = 99;
  EXPECT_EQ(0, addAllRoutes());
  EXPECT_EQ(uint32_t{SHM_ENOENT}, shm_errno);
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Route4, AddingAllLeavesDisabledRoutesAlone) {
  shm->operationalState = SHM_STATE_DEBUG;
  RouteEntry entries[] = {route("10.0.0.0", "255.0.0.0", "192.168.5.254", kDisabled),
                          route("11.0.0.0", "255.0.0.0", "192.168.5.254", kActive),
                          route("12.0.0.0", "255.0.0.0", "192.168.5.254", 0)};
  for (const RouteEntry& entry : entries) addUserRoute(&entry);
  shm->operationalState = SHM_STATE_OPERATIONAL;
  unlink(kConfigFile);
  EXPECT_EQ(0, addAllRoutes());
  EXPECT_EQ(kDisabled, shm->routes.slot[0].status);
  EXPECT_EQ(kInactive, shm->routes.slot[1].status) << "no gateway is local";
  EXPECT_EQ(kInactive, shm->routes.slot[2].status);
  EXPECT_FALSE(fileExists(kConfigFile));
}

TEST_F(Route4, AddingAllNeedsTheLock) {
  dropStore();
  EXPECT_FAILS_WITH(SHM_EATTACH, addAllRoutes());
}

TEST_F(Route4, TheKernelRequestsRefuseNull) {
  EXPECT_FAILS_WITH(SHM_EINVAL, addKernelRoute(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, deleteKernelRoute(nullptr));
}

}  // namespace
}  // namespace kestrove::testing
