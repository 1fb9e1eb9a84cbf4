// SPDX-License-Identifier: Apache-2.0
// Every system call of the route and address operations refused once, and the process killed before each.
#include <arpa/inet.h>
#include <errno.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/syscall.h>

#include "tests/net/routes/routes_fixture.h"
#include "tests/support/fault.h"
#include "tests/support/records.h"

namespace kestrove::testing {
namespace {

constexpr char kOldRoute[] = "10.1.0.0";
constexpr char kNewRoute[] = "10.2.0.0";

RouteEntry route4(const char* net, uint32_t status = kActive) {
  return routeRecord(net, "255.255.0.0", "192.168.5.254", status);
}

Route6Entry route6() {
  Route6Entry route = route6Record("2001:db8:9::", 64, "2001:db8:5::fe", kActive);
  strcpy(route.interfaceName, "eth0");
  return route;
}

ManagementAddress management(const char* address) {
  ManagementAddress entry = managementRecord(address, SHM_IF_WAN);
  entry.status = SHM_ADDRESS_APPLIED;
  return entry;
}

class RouteFaults : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    ASSERT_EQ(0, system("ip link set eth0 up && ip addr flush dev eth0 && ip addr add 192.168.5.1/24 dev eth0 && "
                        "ip -6 addr add 2001:db8:5::1/64 dev eth0 nodad"));
    strcpy(shm->config.wanInterfaceName, "eth0");
  }

  // One active route in table and kernel, one management address.
  void prepare() {
    shm_netlinkConfig("eth0", quad("192.168.5.1"), quad("255.255.255.0"), 0, 1);
    RouteEntry known[] = {route4(kOldRoute), route4(kNewRoute)};
    for (const RouteEntry& route : known) deleteKernelRoute(&route);
    shm->routes.head = 0;
    for (RouteEntry& slot : shm->routes.slot) slot.inUse = slot.next = SHM_NO_SLOT;
    shm->managementAddress[0] = management("192.168.5.1");
    shm->managementAddressCount = 1;
    shm->operationalState = SHM_STATE_CONFIGURATION;
    addUserRoute(&known[0]);
    shm->operationalState = SHM_STATE_OPERATIONAL;
    addAllRoutes();
    ASSERT_EQ(kActive, shm->routes.slot[0].status);
  }

  // Whatever was struck: the work came back unless killed, nothing is open, the lock is free, the list is whole.
  void expectSound(const Aftermath& after, size_t fewest, size_t most) {
    EXPECT_LE(after.leaked, 0);
    ASSERT_EQ(0, shm_lock());
    shm_unlock();
    std::vector<uint32_t> ranks = walk<Family4>();
    EXPECT_GE(ranks.size(), fewest);
    EXPECT_LE(ranks.size(), most);
    size_t used = 0;
    for (const RouteEntry& slot : shm->routes.slot) used += slot.inUse == 1;
    EXPECT_EQ(ranks.size(), used) << "every used slot is on the list";
    EXPECT_LE(static_cast<uint32_t>(shm->managementAddressCount), 2u);
  }

  void sweep(const Work& work, size_t fewest, size_t most) {
    sweepFaults(
        usualFaults(), [this] { prepare(); }, work,
        [&](const Strike& blow, const Aftermath& after) {
          EXPECT_EQ(blow.error != kKilled, after.finished);
          expectSound(after, fewest, most);
        });
  }
};

// One request: a socket, an ioctl, a close. Only the close may fail unseen.
void sweepRequest(const std::function<void()>& prepare, const Work& work) {
  sweepFaults({EIO, EMFILE, EINTR, ENODEV}, prepare, work, [](const Strike&, const Aftermath& after) {
    ASSERT_TRUE(after.finished);
    EXPECT_EQ(0, after.leaked);
    if (after.systemCall == SYS_close) {
      EXPECT_EQ(0, after.result);
    } else {
      EXPECT_EQ(-1, after.result);
      EXPECT_EQ(unsigned{SHM_ESYSTEM}, after.code);
    }
  });
}

TEST_F(RouteFaults, AddingToTheKernel) {
  RouteEntry route = route4(kOldRoute);
  sweepRequest([&] { deleteKernelRoute(&route); }, [&] { return addKernelRoute(&route); });
}

TEST_F(RouteFaults, DeletingFromTheKernel) {
  RouteEntry route = route4(kOldRoute);
  sweepRequest([&] { addKernelRoute(&route); }, [&] { return deleteKernelRoute(&route); });
}

TEST_F(RouteFaults, AddingAnIpv6RouteToTheKernel) {
  Route6Entry route = route6();
  sweepRequest([&] { deleteKernelRoute6(&route); }, [&] { return addKernelRoute6(&route); });
}

TEST_F(RouteFaults, DeletingAnIpv6RouteFromTheKernel) {
  Route6Entry route = route6();
  sweepRequest([&] { addKernelRoute6(&route); }, [&] { return deleteKernelRoute6(&route); });
}

TEST_F(RouteFaults, AddingARoute) {
  sweep(
      [] {
        RouteEntry route = route4(kNewRoute);
        return addUserRoute(&route);
      },
      1, 2);
}

TEST_F(RouteFaults, DeletingARoute) {
  sweep([] { return deleteUserRoute(quad(kOldRoute), quad("255.255.0.0")); }, 0, 1);
}

TEST_F(RouteFaults, ReplacingARoute) {
  sweep(
      [] {
        RouteEntry route = route4(kNewRoute);
        return replaceUserRoute(quad(kOldRoute), quad("255.255.0.0"), &route, 0, "--");
      },
      0, 1);
}

TEST_F(RouteFaults, Freshening) {
  sweep([] { return freshenRouteTable(0, "--"); }, 0, 1);
}

TEST_F(RouteFaults, AddingAllRoutes) {
  sweep([] { return addAllRoutes(); }, 1, 1);
}

TEST_F(RouteFaults, AddingAManagementAddress) {
  sweep(
      [] {
        ManagementAddress entry = management("192.168.6.1");
        return addManagementAddr(&entry);
      },
      0, 1);
}

TEST_F(RouteFaults, RemovingAManagementAddress) {
  sweep(
      [] {
        ManagementAddress entry = management("192.168.5.1");
        return removeManagementAddr(&entry);
      },
      0, 1);
}

}  // namespace
}  // namespace kestrove::testing
