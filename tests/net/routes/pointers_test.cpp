// SPDX-License-Identifier: Apache-2.0
// Records of the store, which every program can reach, as routes and addresses of the operations.
#include <string>

#include "tests/net/routes/routes_fixture.h"
#include "tests/support/store_copy.h"

namespace kestrove::testing {
namespace {

template <typename Family>
class RoutePointers : public StoreTest {
 protected:
  using Route = typename Family::Record;

  // Ten routes, of which every third has left again.
  void SetUp() override {
    StoreTest::SetUp();
    for (uint32_t rank = 0; rank < 10; ++rank) {
      Route route = Family::route(rank);
      ASSERT_EQ(0, Family::add(&route));
    }
    for (uint32_t rank = 0; rank < 10; rank += 3) ASSERT_EQ(0, Family::remove(Family::route(rank)));
  }
};

using Families = ::testing::Types<Family4, Family6>;
TYPED_TEST_SUITE(RoutePointers, Families);

TYPED_TEST(RoutePointers, SlotOfTheTableAsARoute) {
  using Record = typename TypeParam::Record;
  for (uint32_t state : {SHM_STATE_OPERATIONAL, SHM_STATE_DEBUG, SHM_STATE_CONFIGURATION}) {
    for (int slot = 0; slot < 12; ++slot) {
      SCOPED_TRACE(slot);
      shm->operationalState = state;
      Record* record = TypeParam::slots() + slot;
      expectSameAsACopy<Record>(record, [](Record* route) { return TypeParam::add(route); });
      for (uint32_t rank : {1u, 2u, 3u, 8u}) {
        const Record key = TypeParam::route(rank);
        expectSameAsACopy<Record>(record, [&](Record* route) { return TypeParam::replace(key, route); });
      }
    }
  }
}

TYPED_TEST(RoutePointers, SlotOfTheTableAsItsOwnKey) {
  using Record = typename TypeParam::Record;
  for (int slot = 0; slot < 12; ++slot) {
    Record* record = TypeParam::slots() + slot;
    expectSameAsACopy<Record>(record, [](Record* route) { return TypeParam::remove(*route); });
    expectSameAsACopy<Record>(record, [](Record* route) { return TypeParam::replace(*route, route); });
  }
}

TYPED_TEST(RoutePointers, RouteGivenIntoASlotOfTheTable) {
  using Record = typename TypeParam::Record;
  const Record second = TypeParam::slots()[2];
  for (Record* out : {TypeParam::slots() + 2, TypeParam::slots() + 20}) {
    EXPECT_EQ(0, TypeParam::get(second, out));
    EXPECT_EQ(0, memcmp(&second, out, offsetof(Record, inUse)));
  }
  Record first, next;
  EXPECT_EQ(0, TypeParam::first(&first));
  EXPECT_EQ(0, TypeParam::next(first, &next));
  EXPECT_EQ(0, TypeParam::first(TypeParam::slots() + 20));
  EXPECT_EQ(0, TypeParam::next(TypeParam::slots()[20], TypeParam::slots() + 20));
  EXPECT_EQ(0, memcmp(&next, TypeParam::slots() + 20, offsetof(Record, inUse)));
}

using Destination = uint8_t[16];

class Ip6Pointers : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    shm->operationalState = SHM_STATE_CONFIGURATION;
    for (uint8_t i = 0; i < 3; ++i) {
      Ip6Address entry = {{0xfd, i, 1}, 64};
      ASSERT_EQ(0, addIp6(&entry));
    }
  }
};

TEST_F(Ip6Pointers, EntryOfTheTableAsAnAddress) {
  for (int i = 0; i < SHM_IP6_ADDRESSES; ++i) {
    expectSameAsACopy<Ip6Address>(&shm->ip6Address[i], addIp6);
    expectSameAsACopy<Ip6Address>(&shm->ip6Address[i], shm_addIp6);
  }
}

TEST_F(Ip6Pointers, AddressOfAnEntry) {
  for (Ip6Address& entry : shm->ip6Address) {
    auto asText = [&](int (*operation)(const void*)) {
      expectSameAsACopy<Ip6Address>(&entry, [=](Ip6Address* given) { return operation(given->address); });
    };
    asText(checkIp6);
    asText(removeIp6);
    asText([](const void* address) { return shm_editIp6Address(0, address); });
    asText([](const void* address) { return shm_editIp6Address(1, address); });
  }
}

TEST_F(Ip6Pointers, EntryGivenIntoTheTable) {
  const Ip6Address second = shm->ip6Address[1];
  EXPECT_EQ(0, getIp6TableEntry(1, &shm->ip6Address[5]));
  EXPECT_EQ(0, memcmp(&second, &shm->ip6Address[5], sizeof second));
  strcpy(shm->config.sysName, "fd01:100::");
  EXPECT_EQ(0, getIp6TableEntryByAddr(shm->config.sysName,
                                      static_cast<Ip6Address*>(static_cast<void*>(shm->config.sysName))));
  EXPECT_EQ(0, memcmp(&second, shm->config.sysName, sizeof second));
}

TEST_F(Ip6Pointers, MasksAndMatchesOverTheirInputs) {
  Destination& address = shm->ip6Address[0].address;
  memset(address, 0xff, sizeof address);
  convPrefixToMask(shm->ip6Address[1].address, 20);
  v6And(address, shm->ip6Address[1].address, address);
  EXPECT_TRUE(v6Match(address, shm->ip6Address[1].address));
  uint8_t expected[20] = {1, 2, 3, 4, 1, 2, 3, 4};
  uint8_t bytes[20] = {1, 2, 3, 4};
  memcpy(shm->config.sysName, bytes, sizeof bytes);
  memset(shm->config.sysLocation, 0xff, 16);
  v6And(shm->config.sysName, shm->config.sysLocation, shm->config.sysName + 4);
  EXPECT_EQ(0, memcmp(expected, shm->config.sysName, sizeof expected));
}

TEST_F(Ip6Pointers, GatewayOfARouteInTheTable) {
  shm->managementAddressCount = 1;
  ManagementAddress& entry = shm->managementAddress[0];
  entry.ipVersion = 6;
  entry.interfaceKind = 4;
  entry.prefixLength6 = 64;
  Route6Entry& route = shm->routes6.slot[3];
  memset(route.gateway, 7, 16);
  memset(entry.address6, 7, 16);
  EXPECT_EQ(1, gatewayIsLocal6(&route));
  EXPECT_STREQ("br0", route.interfaceName);
}

}  // namespace
}  // namespace kestrove::testing
