// SPDX-License-Identifier: Apache-2.0
// What the IPv6 table has for itself: order, subnets, the mask helpers.
#include <gmock/gmock.h>

#include <algorithm>

#include "tests/net/routes/routes_fixture.h"
#include "tests/support/records.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;

Route6Entry route(const char* destination, uint32_t prefix, const char* gateway = "2001:db8:5::fe",
                  uint32_t status = kDisabled) {
  return route6Record(destination, prefix, gateway, status);
}

class Route6 : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    shm->operationalState = SHM_STATE_CONFIGURATION;
  }
  static int add(const char* destination, uint32_t prefix) {
    Route6Entry entry = route(destination, prefix);
    return addUserRoute6(&entry);
  }
  static std::vector<std::string> destinations() {
    std::vector<std::string> texts;
    Route6Entry entry = {};
    for (int result = getFirstRoute6TableEntry(&entry); result == 0;
         result = getNextRoute6TableEntry(entry.destination, entry.prefixLength, &entry)) {
      texts.push_back(ip6Text(entry.destination) + "/" + std::to_string(entry.prefixLength));
    }
    return texts;
  }
  static void own(int index, uint32_t version, const char* address, uint32_t prefix, int kind) {
    ManagementAddress& entry = shm->managementAddress[index];
    entry.ipVersion = version;
    setIp6(entry.address6, address);
    entry.prefixLength6 = prefix;
    entry.interfaceKind = kind;
    shm->managementAddressCount = index + 1;
  }
};

TEST_F(Route6, LongerPrefixesStandFirst) {
  const std::pair<const char*, uint32_t> nets[] = {{"2001:db8::", 32}, {"2001:db8:1::", 48}, {"2001:db8:1:2::", 64}};
  int order[] = {0, 1, 2};
  do {
    shm->routes6.head6 = 0;
    for (Route6Entry& slot : shm->routes6.slot) slot.inUse = slot.next = SHM_NO_SLOT;
    for (int i : order) EXPECT_EQ(0, add(nets[i].first, nets[i].second));
    EXPECT_THAT(destinations(), ElementsAre("2001:db8:1:2::/64", "2001:db8:1::/48", "2001:db8::/32"));
  } while (std::next_permutation(std::begin(order), std::end(order)));
}

TEST_F(Route6, EqualPrefixesWalkFromTheHighestAddressDown) {
  for (const char* net : {"2001:db8:1::", "2001:db8:ff::", "2001:db8::1:0:0", "3000::", "2001:db8:2::"}) add(net, 64);
  EXPECT_THAT(destinations(),
              ElementsAre("3000::/64", "2001:db8:ff::/64", "2001:db8:2::/64", "2001:db8:1::/64", "2001:db8::1:0:0/64"));
}

// A damaged word of the other table is set right in passing: kept on purpose.
TEST_F(Route6, DeletingTheFirstRouteMendsAnAllOnesHeadOfTheIpv4Table) {
  shm->operationalState = SHM_STATE_DEBUG;
  add("2001:db8:2::", 64);
  add("2001:db8:1::", 64);
  shm->routes.head = SHM_NO_SLOT;
  EXPECT_EQ(0, deleteUserRoute6(ip6("2001:db8:1::").data(), 64));
  EXPECT_EQ(SHM_NO_SLOT, shm->routes.head) << "it was not the first";
  EXPECT_EQ(0, deleteUserRoute6(ip6("2001:db8:2::").data(), 64));
  EXPECT_EQ(0u, shm->routes.head);
}

TEST_F(Route6, AnEmptiedTableTakesTheLowestFreeSlot) {
  shm->operationalState = SHM_STATE_DEBUG;
  shm->routes6.head6 = 5;
  add("2001:db8:1::", 64);
  EXPECT_EQ(1u, shm->routes6.slot[5].inUse);
  EXPECT_EQ(0, deleteUserRoute6(ip6("2001:db8:1::").data(), 64));
  EXPECT_EQ(SHM_NO_SLOT, shm->routes6.head6);
  add("2001:db8:2::", 64);
  EXPECT_EQ(0u, shm->routes6.head6);
  EXPECT_EQ(1u, shm->routes6.slot[0].inUse);
}

TEST_F(Route6, TheInterfaceNameIsStoredAsGiven) {
  Route6Entry entry = route("2001:db8:1::", 64);
  memset(entry.interfaceName, 'x', sizeof entry.interfaceName);
  EXPECT_EQ(0, addUserRoute6(&entry));
  Route6Entry out = {};
  EXPECT_EQ(0, getFirstRoute6TableEntry(&out));
  EXPECT_EQ(0, memcmp(entry.interfaceName, out.interfaceName, sizeof out.interfaceName));
}

TEST_F(Route6, TheFirstIpv6EntryWhoseSubnetHoldsTheGatewayNamesTheInterface) {
  strcpy(shm->config.lanInterfaceName, "lan-name");
  strcpy(shm->config.wanInterfaceName, "wan-name");
  own(0, 4, "2001:db8:5::1", 64, 0);
  own(1, 6, "2001:db8:4::1", 64, 0);
  own(2, 6, "2001:db8:5::1", 64, 1);
  own(3, 6, "2001:db8:5::2", 48, 0);
  Route6Entry entry = route("2001:db8:9::", 64);
  EXPECT_EQ(1, gatewayIsLocal6(&entry));
  EXPECT_STREQ("wan-name", entry.interfaceName);
  entry = route("2001:db8:9::", 64, "2001:db8:5:1::1");
  EXPECT_EQ(1, gatewayIsLocal6(&entry));
  EXPECT_STREQ("lan-name", entry.interfaceName);
  entry = route("2001:db8:9::", 64, "2001:db8:6::1");
  EXPECT_EQ(0, gatewayIsLocal6(&entry));
  EXPECT_STREQ("", entry.interfaceName);
}

TEST_F(Route6, EveryInterfaceNumberHasItsName) {
  strcpy(shm->config.lanInterfaceName, "lan");
  strcpy(shm->config.wanInterfaceName, "wan");
  strcpy(shm->config.managementInterfaceName, "mgmt");
  strcpy(shm->config.bridgeRouterPhysicalName, "base");
  const std::pair<int, const char*> names[] = {{0, "lan"}, {1, "wan"}, {3, "mgmt"}, {4, "br0"}, {5, "base"}};
  for (const auto& [kind, name] : names) {
    own(0, 6, "2001:db8:5::1", 64, kind);
    Route6Entry entry = route("2001:db8:9::", 64);
    EXPECT_EQ(1, gatewayIsLocal6(&entry));
    EXPECT_STREQ(name, entry.interfaceName);
  }
}

TEST_F(Route6, ANumberWithoutANameLeavesTheCallersName) {
  for (int kind : {2, 6, -1, 0x7FFFFFFF}) {
    own(0, 6, "2001:db8:5::1", 64, kind);
    Route6Entry entry = route("2001:db8:9::", 64);
    strcpy(entry.interfaceName, "mine");
    EXPECT_EQ(1, gatewayIsLocal6(&entry));
    EXPECT_STREQ("mine", entry.interfaceName);
  }
}

TEST_F(Route6, AnUnterminatedNameIsCutTo15Characters) {
  memset(shm->config.lanInterfaceName, 'n', sizeof shm->config.lanInterfaceName);
  own(0, 6, "2001:db8:5::1", 64, 0);
  Route6Entry entry = route("2001:db8:9::", 64);
  EXPECT_EQ(1, gatewayIsLocal6(&entry));
  EXPECT_STREQ("nnnnnnnnnnnnnnn", entry.interfaceName);
}

TEST_F(Route6, LocalAttachesWithoutTheLock) {
  own(0, 6, "2001:db8:5::1", 64, 4);
  shm_detach();
  shm = nullptr;
  Route6Entry entry = route("2001:db8:9::", 64);
  EXPECT_EQ(1, gatewayIsLocal6(&entry));
  dropStore();
  EXPECT_EQ(0, gatewayIsLocal6(&entry));
}

TEST_F(Route6, LocalLooksAtNoMoreEntriesThanTheListHas) {
  for (int i = 0; i < SHM_MANAGEMENT_ADDRESSES; ++i) own(i, 6, "2001:db8:6::1", 64, 4);
  shm->managementAddressCount = 0x7FFFFFFF;
  Route6Entry entry = route("2001:db8:9::", 64);
  EXPECT_EQ(0, gatewayIsLocal6(&entry));
  shm->managementAddressCount = -5;
  entry = route("2001:db8:9::", 64, "2001:db8:6::2");
  EXPECT_EQ(0, gatewayIsLocal6(&entry));
}

TEST(Mask6, PrefixesBecomeMasks) {
  const std::pair<int, const char*> masks[] = {{0, "::"},
                                               {1, "8000::"},
                                               {7, "fe00::"},
                                               {8, "ff00::"},
                                               {12, "fff0::"},
                                               {64, "ffff:ffff:ffff:ffff::"},
                                               {127, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:fffe"},
                                               {128, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
                                               {129, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
                                               {0x7FFFFFFF, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
                                               {-1, "::"},
                                               {-0x7FFFFFFF - 1, "::"}};
  for (const auto& [prefix, text] : masks) {
    uint8_t guarded[18];
    memset(guarded, 0x5A, sizeof guarded);
    convPrefixToMask(guarded + 1, prefix);
    EXPECT_EQ(0, memcmp(guarded + 1, ip6(text).data(), 16)) << prefix;
    EXPECT_EQ(0x5A, guarded[0]);
    EXPECT_EQ(0x5A, guarded[17]);
  }
}

TEST(Mask6, AndGoesByteByByte) {
  Ip6 out;
  v6And(ip6("2001:db8:ffff::1").data(), ip6("ffff:ff00:f0f0::").data(), out.data());
  EXPECT_EQ(ip6("2001:d00:f0f0::"), out);
  v6And(out.data(), ip6("ffff::").data(), out.data());
  EXPECT_EQ(ip6("2001::"), out);
}

TEST(Mask6, MatchComparesAllSixteenBytes) {
  Ip6 one = ip6("2001:db8::1");
  EXPECT_EQ(1, v6Match(one.data(), ip6("2001:db8::1").data()));
  for (size_t i = 0; i < 16; ++i) {
    Ip6 other = one;
    other.data()[i] ^= 0x80;
    EXPECT_EQ(0, v6Match(one.data(), other.data()));
  }
}

TEST(Mask6, NullIsRefused) {
  Ip6 out = ip6("1::");
  convPrefixToMask(nullptr, 64);
  v6And(nullptr, out.data(), out.data());
  v6And(out.data(), nullptr, out.data());
  v6And(out.data(), out.data(), nullptr);
  EXPECT_EQ(ip6("1::"), out);
  EXPECT_FAILS_WITH(SHM_EINVAL, v6Match(nullptr, out.data()));
  EXPECT_FAILS_WITH(SHM_EINVAL, v6Match(out.data(), nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, gatewayIsLocal6(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, addKernelRoute6(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, deleteKernelRoute6(nullptr));
  Route6Entry route = {};
  EXPECT_FAILS_WITH(SHM_EINVAL, replaceUserRoute6(nullptr, 64, &route, 0, "--"));
  EXPECT_FAILS_WITH(SHM_EINVAL, deleteUserRoute6(nullptr, 64));
  EXPECT_FAILS_WITH(SHM_EINVAL, getRoute6TableEntry(nullptr, 64, &route));
  EXPECT_FAILS_WITH(SHM_EINVAL, getNextRoute6TableEntry(nullptr, 64, &route));
}

}  // namespace
}  // namespace kestrove::testing
