// SPDX-License-Identifier: Apache-2.0
// Network items against the real kernel.
#include <stdlib.h>
#include <string.h>

#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

constexpr uint32_t kOldGateway = 0x0209090A;  // 10.9.9.2
constexpr uint32_t kNewGateway = 0x0309090A;
constexpr uint32_t kMask24 = 0x00FFFFFF;

bool run(const std::string& line) { return system(line.c_str()) == 0; }

class NetworkPortsTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    strcpy(shm->config.physicalWanInterfaceName, "eth0");
    strcpy(shm->config.bridgeRouterPhysicalName, "eth0");
    strcpy(shm->config.physicalLanInterfaceName, "eth1");
    shm->config.wanGateway = kOldGateway;
    shm->config.wanIpAddress = 0x0109090A;
    shm->config.wanIpAddressMask = kMask24;
    shm->config.wanBroadcastAddress = 0xFF09090A;
    ASSERT_TRUE(run("ip addr flush dev eth0; ip addr add 10.9.9.9/24 dev eth0; ip link set eth0 up"));
    ASSERT_TRUE(run("ip neigh replace 10.9.9.2 lladdr 02:00:00:00:00:77 dev eth0 nud permanent"));
    ASSERT_TRUE(knowsOldGateway());
  }
  static bool knowsOldGateway() { return readFile("/proc/net/arp").find("02:00:00:00:00:77") != std::string::npos; }
  static std::string addresses() {
    run("ip -4 -o addr show dev eth0 > /tmp/addresses");
    return readFile("/tmp/addresses");
  }
};

TEST_F(NetworkPortsTest, ANewWanGatewayDropsTheOldOneAndReaddressesThePort) {
  EXPECT_EQ(0, setNetworkConfigItem(15, &kNewGateway, 0, "--"));
  EXPECT_FALSE(knowsOldGateway());
  EXPECT_EQ(kNewGateway, shm->config.wanGateway);
  EXPECT_NE(std::string::npos, addresses().find("10.9.9.1/24 brd 10.9.9.255")) << addresses();
}

TEST_F(NetworkPortsTest, ANewLanGatewayDropsTheWanGatewaysEntry) {
  shm->config.lanGateway = 0x0101A8C0;
  EXPECT_EQ(0, setNetworkConfigItem(14, &kNewGateway, 0, "--"));
  EXPECT_FALSE(knowsOldGateway());
  EXPECT_EQ(kOldGateway, shm->config.wanGateway);
  EXPECT_EQ(kNewGateway, shm->config.lanGateway);
}

TEST_F(NetworkPortsTest, TheSameGatewayKeepsItsEntry) {
  EXPECT_EQ(0, setNetworkConfigItem(15, &kOldGateway, 0, "--"));
  EXPECT_TRUE(knowsOldGateway());
  EXPECT_EQ(std::string::npos, addresses().find("10.9.9.1/24"));
}

TEST_F(NetworkPortsTest, ConfigurationModeLeavesTheKernelAlone) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_EQ(0, setNetworkConfigItem(14, &kNewGateway, 0, "--"));
  EXPECT_EQ(0, setNetworkConfigItem(15, &kNewGateway, 0, "--"));
  EXPECT_TRUE(knowsOldGateway());
  EXPECT_EQ(kNewGateway, shm->config.wanGateway);
  EXPECT_EQ(std::string::npos, addresses().find("10.9.9.1/24"));
}

TEST_F(NetworkPortsTest, AnEntryThatIsNotThereDoesNotFailTheItem) {
  ASSERT_TRUE(run("ip neigh del 10.9.9.2 dev eth0"));
  shm->config.physicalWanInterfaceName[0] = '\0';  // no such port either
  EXPECT_EQ(0, setNetworkConfigItem(15, &kNewGateway, 0, "--"));
  EXPECT_TRUE(fileExists("/etc/config/kestrove.conf"));
}

}  // namespace
}  // namespace kestrove::testing
