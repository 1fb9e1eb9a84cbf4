// SPDX-License-Identifier: Apache-2.0
// What the kernel holds after settings were carried out: the same as when each change had been made by itself.
#include <functional>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/kernel.h"
#include "tests/support/ports.h"
#include "tests/support/records.h"
#include "tests/support/save_counter.h"
#include "tests/support/store.h"
#include "tools/ctl/settings/carry_out.h"

namespace kestrove::testing {
namespace {

using ctl::carryOut;
using ctl::Image;
using ctl::Outcome;

using Changes = std::function<void()>;

// The mode of two interfaces, bridged, with a management address on the bridge, as after a start.
class CarryOutKernel : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    start();
  }

  void start() {
    namePorts("eth0", "eth1", "eth0");
    strcpy(shm->config.managementInterfaceName, "eth2");
    shm->config.singleInterfaceMode = shm->config.pbrOperState = SHM_OFF;
    shm->config.lanIpAddress = quad("10.1.0.1");
    shm->config.lanIpAddressMask = quad("255.255.0.0");
    shm->config.wanIpAddress = quad("10.2.0.1");
    shm->config.wanIpAddressMask = quad("255.255.255.0");
    shm->config.lanGateway = quad("10.1.0.254");
    shm->config.wanGateway = quad("10.2.0.254");
    ASSERT_EQ(0, write_shared_memory());
    OpModeContext context = {};
    ASSERT_EQ(0, OpModeState(SHM_MODE_EVENT_POWERED_ON, &context));
    run("echo 0 > /proc/sys/net/ipv6/conf/br0/accept_dad");
    address("192.168.50.1", "255.255.255.0");
    route("172.16.0.0", "255.255.0.0", "192.168.50.254");
    shm->pendingChanges = 0;
  }

  static void address(const char* text, const char* mask, int kind = SHM_IF_BRIDGE) {
    ManagementAddress entry = managementRecord(text, kind, mask);
    ASSERT_EQ(0, addManagementAddr(&entry)) << text;
  }
  static void route(const char* destination, const char* mask, const char* gateway,
                    uint32_t status = SHM_ROUTE_ACTIVE) {
    RouteEntry entry = {quad(destination), quad(mask), quad(gateway), status, 0, 0};
    ASSERT_EQ(0, addUserRoute(&entry)) << destination;
  }

  // Sorted: the order of neighbours in the tables is not what is meant; nor is how far the kernel is with IPv6
  // addresses.
  static std::string kernel() {
    return outputOf(
        "{ ip -o -4 address show; ip -o -6 address show scope global; ip route show table all | grep -v linkdown; "
        "ip -6 route show | grep -v fe80; ip rule show; brctl show | sed 1d; } 2>/dev/null "
        "| grep -v 'fe80::\\|ff00::\\|^local .*:' | sed 's/^[0-9]*: //; s/ tentative//; s/valid_lft.*//' | sort");
  }

  static Image madeBy(const Changes& changes) {
    changes();
    return Image(*shm);
  }

  // There, each by itself; back, by carrying out; there again, by carrying out. Some changes cannot be taken back by
  // any other: the WAN port keeps the address that a new gateway gives it again.
  void expectSameKernel(const Changes& changes, bool reversible = true) {
    const Image before(*shm);
    const std::string kernelBefore = kernel();
    const Image after = madeBy(changes);
    const std::string kernelAfter = kernel();
    EXPECT_NE(kernelBefore, kernelAfter);
    carryOutWhole(before);
    EXPECT_EQ(reversible ? kernelBefore : kernel(), kernel());
    carryOutWhole(after);
    EXPECT_EQ(kernelAfter, kernel());
  }

  void carryOutWhole(const Image& target) {
    const Outcome outcome = carryOut(session_, *target);
    EXPECT_EQ("", differenceText(outcome.left, false));
    EXPECT_EQ(ctl::kDone, outcome.exit());
    for (const ctl::Step& step : outcome.steps) EXPECT_TRUE(step.done) << step.line << ": " << step.reason;
  }

  ctl::Session session_;
};

TEST_F(CarryOutKernel, HasTheAddressesThatCome) {
  expectSameKernel([] {
    address("192.168.60.1", "255.255.255.0");
    address("192.168.61.1", "255.255.255.0", SHM_IF_MANAGEMENT);
    Ip6Address six = {};
    setIp6(six.address, "2001:db8:50::1");
    six.prefixLength = 64;
    ASSERT_EQ(0, addIp6(&six));
  });
}

TEST_F(CarryOutKernel, HasTheRoutesThatCome) {
  expectSameKernel([] {
    route("172.17.0.0", "255.255.0.0", "192.168.50.253");
    route("172.18.0.0", "255.255.0.0", "9.9.9.9");  // its gateway is nowhere near
    route("172.19.0.0", "255.255.0.0", "192.168.50.252", SHM_ROUTE_DISABLED);
  });
  RouteEntry stored;
  ASSERT_EQ(0, getRouteTableEntry(quad("172.18.0.0"), quad("255.255.0.0"), &stored));
  EXPECT_EQ(uint32_t{SHM_ROUTE_INACTIVE}, stored.status);
}

TEST_F(CarryOutKernel, HasARouteWhoseGatewayChanged) {
  expectSameKernel([] {
    RouteEntry entry = {quad("172.16.0.0"), quad("255.255.0.0"), quad("192.168.50.7"), SHM_ROUTE_ACTIVE, 0, 0};
    ASSERT_EQ(0, replaceUserRoute(entry.destination, entry.netmask, &entry, 0, "--"));
  });
}

TEST_F(CarryOutKernel, HasTheRoutesWhoseGatewayCameNear) {
  expectSameKernel([] {
    route("172.20.0.0", "255.255.0.0", "192.168.70.254");
    address("192.168.70.1", "255.255.255.0");
  });
}

TEST_F(CarryOutKernel, HasTheSingleInterface) {
  expectSameKernel([] { ASSERT_EQ(0, setSingleInterfaceMode(SHM_ON, 12, 13)); });
}

TEST_F(CarryOutKernel, HasPolicyRouting) {
  expectSameKernel([] {
    ASSERT_EQ(0, setSingleInterfaceMode(SHM_ON, 12, 13));
    ASSERT_EQ(0, setKestroveConfigItem(SHM_ITEM_POLICY_ROUTING, SHM_ON, 0, "--"));
  });
}

TEST_F(CarryOutKernel, HasOtherAddressesInPolicyRouting) {
  ASSERT_EQ(0, setSingleInterfaceMode(SHM_ON, 12, 13));
  ASSERT_EQ(0, setKestroveConfigItem(SHM_ITEM_POLICY_ROUTING, SHM_ON, 0, "--"));
  expectSameKernel(
      [] {
        const uint32_t lan = quad("10.3.0.1"), gateway = quad("10.2.0.7");
        ASSERT_EQ(0, setNetworkConfigItem(SHM_NET_WAN_GATEWAY, &gateway, 0, "--"));
        ASSERT_EQ(0, setNetworkConfigItem(SHM_NET_LAN_ADDRESS, &lan, 0, "--"));
        ASSERT_EQ(0, setNetworkConfigItem(SHM_NET_LAN_GATEWAY, &lan, 0, "--"));
      },
      false);
}

TEST_F(CarryOutKernel, AnAddressThatItsInterfaceRefusesIsNamedAndNotStored) {
  Image target(*shm);
  target->managementAddress[1] = managementRecord("192.168.80.1", SHM_IF_MANAGEMENT, "255.255.255.0");
  target->managementAddressCount = 2;
  run("ip link set eth2 name gone0");
  const Outcome outcome = carryOut(session_, *target);
  EXPECT_EQ(ctl::kRefused, outcome.exit());
  EXPECT_EQ(1, shm->managementAddressCount);
  ASSERT_EQ(1u, outcome.steps.size());
  EXPECT_EQ("address add 192.168.80.1/24 --interface management", outcome.steps[0].line);
  EXPECT_NE(std::string::npos, outcome.steps[0].reason.find("its interface refuses it"));
}

}  // namespace
}  // namespace kestrove::testing
