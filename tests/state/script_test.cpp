// SPDX-License-Identifier: Apache-2.0
// The command script whole, its settings, and its failures.

#include "tests/state/script_fixture.h"
#include "tests/support/records.h"

namespace kestrove::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

TEST_F(ScriptTest, ZeroedStore) {
  memset(&config(), 0, sizeof config());
  EXPECT_EQ(
      "set rateLimit WAN 0\nset mtu WAN 0\nset rateLimit LAN 0\nset mtu LAN 0\n"
      "set interfaceMode single 0 0\n"
      "set prb off\n"
      "set pbrAddress LAN 0.0.0.0\nset pbrMask LAN 0.0.0.0\nset pbrAddress WAN 0.0.0.0\nset pbrMask WAN 0.0.0.0\n\n"
      "set sshInterface off\nset httpInterface off\nset compression off\nset logging off\n"
      "set accelerationMode \n"
      "set linkSetting LAN 10baseT\nset linkSetting WAN 10baseT\n",
      wholeScript());
}

TEST_F(ScriptTest, WholeScriptInItsOrder) {
  config().wanLinkRate = 45000999;
  config().wanMaximumTransferUnit = 1500;
  config().lanLinkRate = 100000000;
  config().lanMaximumTransferUnit = 1400;
  config().singleInterfaceMode = 1;
  config().lanVlanId = 12;
  config().wanVlanId = 4094;
  config().pbrOperState = 1;
  config().lanIpAddress = quad("10.0.0.1");
  config().lanIpAddressMask = quad("255.255.255.0");
  config().wanIpAddress = quad("192.168.255.254");
  config().wanIpAddressMask = quad("255.255.255.252");
  config().sshdOperState = config().httpOperState = config().compression = config().loggingOperState = 1;
  config().wanCongestionControl = 2;
  config().hardwarePlatform = 14;
  config().lanLinkSetting = 1;
  config().wanLinkSetting = 140;
  config().managementLinkSetting = 100;
  shm->managementAddressCount = 1;
  shm->managementAddress[0].ipVersion = 4;
  shm->managementAddress[0].address = quad("172.16.0.9");
  shm->managementAddress[0].mask = quad("255.255.0.0");
  shm->managementAddress[0].interfaceKind = 4;
  shm->routes.slot[0] = {quad("10.1.0.0"), quad("255.255.0.0"), quad("192.168.1.254"), 2, 1, SHM_NO_SLOT};
  shm->routes6.slot[0] = linked(route6Record("2001:db8::", 32, "fe80::1", SHM_ROUTE_ACTIVE));
  FilterRule rule = {};
  rule.ipVersion = 4;
  rule.bandwidth = 64999;
  rule.target = 5;
  rule.priority = 7;
  rule.accel = 1;
  line(rule);
  EXPECT_EQ(
      "set rateLimit WAN 45000\nset mtu WAN 1500\nset rateLimit LAN 100000\nset mtu LAN 1400\n"
      "ip add 172.16.0.9 255.255.0.0 -b\n"
      "set interfaceMode single 12 4094\n"
      "set prb on\n"
      "set pbrAddress LAN 10.0.0.1\nset pbrMask LAN 255.255.255.0\n"
      "set pbrAddress WAN 192.168.255.254\nset pbrMask WAN 255.255.255.252\n\n"
      "set sshInterface on\nset httpInterface on\nset compression on\nset logging on\n"
      "set accelerationMode perConnection\n\n"
      "set linkSetting LAN auto\nset linkSetting WAN 1000baseTx-FD\nset linkSetting MANAGEMENT 100baseTx-FD\n"
      "route add 10.1.0.0 255.255.0.0 192.168.1.254 -n\n"
      "route6 add 2001:db8:: 32 fe80::1 \n"
      "rule add 1 -ipVersion 4 -proto ANY -p 7 -bw 64 \n",
      wholeScript());
}

TEST_F(ScriptTest, RatesAtTheirExtremes) {
  config().wanLinkRate = 0xFFFFFFFF;
  config().wanMaximumTransferUnit = 0xFFFFFFFF;
  EXPECT_THAT(wholeScript(), HasSubstr("set rateLimit WAN 4294967\nset mtu WAN -1\n"));
}

TEST_F(ScriptTest, InterfaceMode) {
  config().lanVlanId = 0xFFFFFFFF;
  config().wanVlanId = 3;
  for (uint8_t single : {uint8_t{0}, uint8_t{1}, uint8_t{3}, uint8_t{255}}) {
    config().singleInterfaceMode = single;
    EXPECT_THAT(wholeScript(), HasSubstr("set interfaceMode single 4294967295 3\n"));
  }
  config().singleInterfaceMode = 2;
  EXPECT_THAT(wholeScript(), HasSubstr("set interfaceMode double\nset prb"));
}

struct SwitchRow {
  uint8_t ConfigRecord::*field;
  const char* words;
};
constexpr SwitchRow kSwitches[] = {{&ConfigRecord::pbrOperState, "\nset prb "},
                                   {&ConfigRecord::sshdOperState, "\nset sshInterface "},
                                   {&ConfigRecord::httpOperState, "\nset httpInterface "},
                                   {&ConfigRecord::compression, "\nset compression "},
                                   {&ConfigRecord::loggingOperState, "\nset logging "}};

TEST_F(ScriptTest, SwitchesAreOnAtOneAlone) {
  for (const SwitchRow& row : kSwitches) {
    for (uint8_t value : {uint8_t{0}, uint8_t{1}, uint8_t{2}, uint8_t{255}}) {
      memset(&config(), 0, sizeof config());
      config().*row.field = value;
      EXPECT_THAT(wholeScript(), HasSubstr(std::string(row.words) + (value == 1 ? "on\n" : "off\n")));
    }
  }
}

struct AccelerationRow {
  uint8_t mode;
  uint32_t product;
  const char* word;
};

TEST_F(ScriptTest, AccelerationWordsCarryTheirNewline) {
  const AccelerationRow rows[] = {{2, 6, "perConnection\n"},
                                  {2, 5, "variable\n"},
                                  {5, 6, "ratepacing\n"},
                                  {5, 5, "constant\n"},
                                  {4, 6, "errors\n"},
                                  {4, 5, "errors\n"},
                                  {0, 6, ""},
                                  {1, 5, ""},
                                  {3, 6, ""},
                                  {6, 5, ""},
                                  {255, 6, ""}};
  for (const AccelerationRow& row : rows) {
    config().wanCongestionControl = row.mode;
    config().productId = row.product;
    EXPECT_THAT(wholeScript(), HasSubstr("\nset accelerationMode " + std::string(row.word) + "\nset linkSetting LAN "));
  }
}

TEST_F(ScriptTest, ManagementLinkOnItsPlatformAlone) {
  for (uint32_t platform : {0u, 13u, 15u, 0xFFFFFFFFu}) {
    config().hardwarePlatform = platform;
    EXPECT_THAT(wholeScript(), Not(HasSubstr("MANAGEMENT")));
  }
  config().hardwarePlatform = 14;
  EXPECT_THAT(wholeScript(), EndsWith("set linkSetting MANAGEMENT 10baseT\n"));
}

struct LinkRow {
  uint32_t setting;
  const char* word;
};
constexpr LinkRow kLinks[] = {{1, "auto"},           {20, "10baseT"},  {40, "10baseT-FD"},      {80, "100baseTx"},
                              {100, "100baseTx-FD"}, {120, "10baseT"}, {140, "1000baseTx-FD"},  {0, "10baseT"},
                              {2, "10baseT"},        {141, "10baseT"}, {0xFFFFFFFFu, "10baseT"}};

TEST_F(ScriptTest, LinkWords) {
  for (const LinkRow& row : kLinks) {
    config().lanLinkSetting = config().wanLinkSetting = config().managementLinkSetting = row.setting;
    auto lineOf = [](int which) { return printed([which](FILE* stream) { return __saveLink(stream, which); }); };
    EXPECT_EQ(std::string("set linkSetting LAN ") + row.word + "\n", lineOf(0));
    EXPECT_EQ(std::string("set linkSetting WAN ") + row.word + "\n", lineOf(1));
    EXPECT_EQ(std::string("set linkSetting MANAGEMENT ") + row.word + "\n", lineOf(3));
  }
}

TEST_F(ScriptTest, LinkOfAnotherInterface) {
  for (int which : {-1, 2, 4, 5, INT32_MAX}) {
    EXPECT_EQ("", printed([which](FILE* stream) {
                EXPECT_FAILS_WITH(SHM_EINVAL, __saveLink(stream, which));
                return 0;
              }));
  }
}

TEST_F(ScriptTest, SectionsAreFlushed) {
  FILE* file = fopen("/tmp/rules", "w");
  line(rule4());
  EXPECT_EQ(0, __saveSARules(file));
  EXPECT_EQ("rule add 1 -ipVersion 4 -proto ANY -b \n", readFile("/tmp/rules"));
  fclose(file);
}

TEST_F(ScriptTest, ScriptThatCannotBeMade) {
  shm_errno = 99;
  EXPECT_EQ(-1, __saveCliState("no/such/folder"));
  EXPECT_EQ(-1, __saveCliState(std::string(5000, 'x').c_str()));
  EXPECT_EQ(99u, shm_errno);
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(ScriptTest, StreamThatTakesNothing) {
  FILE* full = fopen("/dev/full", "w");
  ASSERT_NE(nullptr, full);
  line(rule4());
  EXPECT_EQ(-1, __saveSARules(full));
  fclose(full);
}

TEST_F(ScriptTest, NoStreamAndNoRecord) {
  RouteEntry route = {};
  Route6Entry route6Entry = {};
  EXPECT_FAILS_WITH(SHM_EINVAL, __saveManagement(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, __saveLink(nullptr, 0));
  EXPECT_FAILS_WITH(SHM_EINVAL, __saveSARules(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, __saveRoutes(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, __saveIpv6Routes(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, __printRoute(nullptr, &route));
  EXPECT_FAILS_WITH(SHM_EINVAL, __printRoute(stdout, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, __printIpv6Route(nullptr, &route6Entry));
  EXPECT_FAILS_WITH(SHM_EINVAL, __printIpv6Route(stdout, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, __saveCliState(nullptr));
}

TEST_F(ScriptTest, WithoutAStore) {
  dropStore();
  unlink(kScript);
  EXPECT_FAILS_WITH(SHM_EATTACH, __saveManagement(stdout));
  EXPECT_FAILS_WITH(SHM_EATTACH, __saveLink(stdout, 0));
  EXPECT_FAILS_WITH(SHM_EATTACH, __saveSARules(stdout));
  EXPECT_FAILS_WITH(SHM_EATTACH, __saveRoutes(stdout));
  EXPECT_FAILS_WITH(SHM_EATTACH, __saveIpv6Routes(stdout));
  EXPECT_FAILS_WITH(SHM_EATTACH, __saveCliState("now"));
  EXPECT_FALSE(fileExists(kScript));
}

TEST_F(ScriptTest, RandomBytesInTheStore) {
  srand(7);
  for (int i = 0; i < 20; ++i) {
    auto* bytes = reinterpret_cast<uint8_t*>(shm);
    for (size_t k = 0; k < SHM_SIZE; ++k) bytes[k] = static_cast<uint8_t>(rand());
    shm->filterTable.ruleCount = i % 2 ? 8192 : shm->filterTable.ruleCount;
    EXPECT_EQ(0, __saveCliState("now"));
  }
}

}  // namespace
}  // namespace kestrove::testing
