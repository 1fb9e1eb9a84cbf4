// SPDX-License-Identifier: Apache-2.0
// The script's management addresses and routes.

#include "tests/state/script_fixture.h"
#include "tests/support/records.h"

namespace kestrove::testing {
namespace {

TEST_F(ScriptTest, ManagementAddresses) {
  ManagementAddress* entry = shm->managementAddress;
  entry[0] = managementRecord("10.0.0.1", 0, "255.0.0.0");
  entry[1] = managementRecord("10.0.0.2", 5, "255.255.255.255");
  entry[2] = managementRecord("10.0.0.3", 3, "0.0.0.0");
  entry[3] = managementRecord("255.255.255.255", -1, "255.0.0.0");
  entry[4] = management6Record("2001:db8::5", 4);
  entry[5].ipVersion = 5;
  entry[6].ipVersion = 6;
  entry[6].prefixLength6 = 0xFFFFFFFF;
  entry[6].interfaceKind = 1;
  shm->managementAddressCount = 7;
  EXPECT_EQ(
      "ip add 10.0.0.1 255.0.0.0 -v\nip add 10.0.0.2 255.255.255.255 -v\nip add 10.0.0.3 0.0.0.0 -m\n"
      "ip add 255.255.255.255 255.0.0.0 -m\nip add 2001:db8::5 64 -b\nip add :: -1 -m\n",
      printed(__saveManagement));
}

TEST_F(ScriptTest, RoutesOfTheTable) {
  shm->routes.slot[3].destination = quad("10.1.0.0");
  setIp6(shm->routes6.slot[3].destination, "2001:db8::");
  EXPECT_EQ("route add 10.1.0.0 0.0.0.0 0.0.0.0 \n",
            printed([](FILE* stream) { return __printRoute(stream, &shm->routes.slot[3]); }));
  EXPECT_EQ("route6 add 2001:db8:: 0 :: \n",
            printed([](FILE* stream) { return __printIpv6Route(stream, &shm->routes6.slot[3]); }));
}

TEST_F(ScriptTest, DamagedManagementCount) {
  for (int i = 0; i < 7; ++i) shm->managementAddress[i] = managementRecord("10.0.0.1", 4, "255.0.0.0");
  for (int32_t count : {0, -1, INT32_MIN}) {
    shm->managementAddressCount = count;
    EXPECT_EQ("", printed(__saveManagement));
  }
  for (int32_t count : {8, INT32_MAX}) {
    shm->managementAddressCount = count;
    EXPECT_EQ(7 * strlen("ip add 10.0.0.1 255.0.0.0 -b\n"), printed(__saveManagement).size());
  }
}

TEST_F(ScriptTest, RoutesInListOrder) {
  shm->routes.head = 7;
  shm->routes.slot[7] = {quad("10.1.0.0"), quad("255.255.0.0"), quad("192.168.1.254"), 2, 1, 3};
  shm->routes.slot[3] = {quad("10.2.0.0"), quad("255.255.0.0"), quad("192.168.1.253"), 3, 1, 1023};
  shm->routes.slot[1023] = {0, 0, quad("192.168.1.1"), 0xFFFFFFFF, 1, SHM_NO_SLOT};
  EXPECT_EQ(
      "route add 10.1.0.0 255.255.0.0 192.168.1.254 -n\n"
      "route add 10.2.0.0 255.255.0.0 192.168.1.253 \n"
      "route add 0.0.0.0 0.0.0.0 192.168.1.1 \n",
      printed(__saveRoutes));
}

TEST_F(ScriptTest, Ipv6RoutesInListOrder) {
  shm->routes6.head6 = 2;
  shm->routes6.slot[2] = linked(route6Record("2001:db8:1::", 48, "fe80::1", 2), 0);
  shm->routes6.slot[0] = linked(route6Record("::ffff:1.2.3.4", 128, "::", 1), 1);
  shm->routes6.slot[1] =
      linked(route6Record("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", 0xFFFFFFFF, "::1", 3), SHM_NO_SLOT);
  EXPECT_EQ(
      "route6 add 2001:db8:1:: 48 fe80::1 -n\n"
      "route6 add ::ffff:1.2.3.4 128 :: \n"
      "route6 add ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff -1 ::1 \n",
      printed(__saveIpv6Routes));
}

TEST_F(ScriptTest, SingleRouteLines) {
  RouteEntry route = {quad("10.1.0.0"), quad("255.255.0.0"), quad("192.168.1.254"), 2, 0, 0};
  EXPECT_EQ("route add 10.1.0.0 255.255.0.0 192.168.1.254 -n\n",
            printed([&](FILE* stream) { return __printRoute(stream, &route); }));
  Route6Entry route6 = route6Record("2001:db8::", 32, "fe80::1", 3);
  EXPECT_EQ("route6 add 2001:db8:: 32 fe80::1 \n",
            printed([&](FILE* stream) { return __printIpv6Route(stream, &route6); }));
}

TEST_F(ScriptTest, DamagedRouteChainsEnd) {
  for (uint32_t head : {0u, 1024u, SHM_NO_SLOT, 0x80000000u}) {
    shm->routes.head = shm->routes6.head6 = head;
    EXPECT_EQ("", printed(__saveRoutes));
    EXPECT_EQ("", printed(__saveIpv6Routes));
  }
  shm->routes.head = shm->routes6.head6 = 5;
  shm->routes.slot[5] = {0, 0, 0, 3, 1, 5};
  shm->routes6.slot[5] = linked(route6Record("::", 0, "::", 3), 5);
  EXPECT_EQ(1024 * strlen("route add 0.0.0.0 0.0.0.0 0.0.0.0 \n"), printed(__saveRoutes).size());
  EXPECT_EQ(1024 * strlen("route6 add :: 0 :: \n"), printed(__saveIpv6Routes).size());
  shm->routes.slot[5].next = 1024;
  shm->routes6.slot[5].next = 6;  // not in use
  EXPECT_EQ("route add 0.0.0.0 0.0.0.0 0.0.0.0 \n", printed(__saveRoutes));
  EXPECT_EQ("route6 add :: 0 :: \n", printed(__saveIpv6Routes));
}

}  // namespace
}  // namespace kestrove::testing
