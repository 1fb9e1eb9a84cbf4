// The command script, section by section and whole.

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <functional>

#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

constexpr char kScript[] = "/usr/local/apache2/htdocs/state-now.txt";

uint32_t quad(const char* text) { return inet_addr(text); }

template <size_t N>
void setIp6(uint8_t (&address)[N], const char* text) {
  ASSERT_EQ(1, inet_pton(AF_INET6, text, address));
}

// What the writer puts on a stream.
std::string written(const std::function<int(FILE*)>& write) {
  char* text = nullptr;
  size_t size = 0;
  FILE* stream = open_memstream(&text, &size);
  EXPECT_EQ(0, write(stream));
  fclose(stream);
  std::string result(text, size);
  free(text);
  return result;
}

std::string wholeScript() {
  EXPECT_EQ(0, __saveCliState("now"));
  return readFile(kScript);
}

class ScriptTest : public StoreTest {
 protected:
  static ConfigRecord& config() { return shm->config; }

  // The rule in front of the default one, as the script has it.
  static std::string line(const FilterRule& rule) {
    shm->filterTable.rule[1] = shm->filterTable.rule[0];
    shm->filterTable.rule[0] = rule;
    shm->filterTable.ruleCount = 2;
    return written(__saveSARules);
  }
};

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
  Route6Entry& route6 = shm->routes6.slot[0];
  route6 = {};
  setIp6(route6.destination, "2001:db8::");
  setIp6(route6.gateway, "fe80::1");
  route6.prefixLength = 32;
  route6.status = 3;
  route6.inUse = 1;
  route6.next = SHM_NO_SLOT;
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
    auto lineOf = [](int which) { return written([which](FILE* stream) { return __saveLink(stream, which); }); };
    EXPECT_EQ(std::string("set linkSetting LAN ") + row.word + "\n", lineOf(0));
    EXPECT_EQ(std::string("set linkSetting WAN ") + row.word + "\n", lineOf(1));
    EXPECT_EQ(std::string("set linkSetting MANAGEMENT ") + row.word + "\n", lineOf(3));
  }
}

TEST_F(ScriptTest, LinkOfAnotherInterface) {
  for (int which : {-1, 2, 4, 5, INT32_MAX}) {
    EXPECT_EQ("", written([which](FILE* stream) {
                EXPECT_FAILS_WITH(SHM_EINVAL, __saveLink(stream, which));
                return 0;
              }));
  }
}

ManagementAddress address4(const char* address, const char* mask, int32_t kind) {
  ManagementAddress entry = {};
  entry.ipVersion = 4;
  entry.address = quad(address);
  entry.mask = quad(mask);
  entry.interfaceKind = kind;
  return entry;
}

TEST_F(ScriptTest, ManagementAddresses) {
  ManagementAddress* entry = shm->managementAddress;
  entry[0] = address4("10.0.0.1", "255.0.0.0", 0);
  entry[1] = address4("10.0.0.2", "255.255.255.255", 5);
  entry[2] = address4("10.0.0.3", "0.0.0.0", 3);
  entry[3] = address4("255.255.255.255", "255.0.0.0", -1);
  entry[4].ipVersion = 6;
  setIp6(entry[4].address6, "2001:db8::5");
  entry[4].prefixLength6 = 64;
  entry[4].interfaceKind = 4;
  entry[5].ipVersion = 5;
  entry[6].ipVersion = 6;
  entry[6].prefixLength6 = 0xFFFFFFFF;
  entry[6].interfaceKind = 1;
  shm->managementAddressCount = 7;
  EXPECT_EQ(
      "ip add 10.0.0.1 255.0.0.0 -v\nip add 10.0.0.2 255.255.255.255 -v\nip add 10.0.0.3 0.0.0.0 -m\n"
      "ip add 255.255.255.255 255.0.0.0 -m\nip add 2001:db8::5 64 -b\nip add :: -1 -m\n",
      written(__saveManagement));
}

TEST_F(ScriptTest, DamagedManagementCount) {
  for (int i = 0; i < 7; ++i) shm->managementAddress[i] = address4("10.0.0.1", "255.0.0.0", 4);
  for (int32_t count : {0, -1, INT32_MIN}) {
    shm->managementAddressCount = count;
    EXPECT_EQ("", written(__saveManagement));
  }
  for (int32_t count : {8, INT32_MAX}) {
    shm->managementAddressCount = count;
    EXPECT_EQ(7 * strlen("ip add 10.0.0.1 255.0.0.0 -b\n"), written(__saveManagement).size());
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
      written(__saveRoutes));
}

Route6Entry route6(const char* destination, uint32_t length, const char* gateway, uint32_t status, uint32_t next) {
  Route6Entry route = {};
  setIp6(route.destination, destination);
  setIp6(route.gateway, gateway);
  route.prefixLength = length;
  route.status = status;
  route.inUse = 1;
  route.next = next;
  return route;
}

TEST_F(ScriptTest, Ipv6RoutesInListOrder) {
  shm->routes6.head6 = 2;
  shm->routes6.slot[2] = route6("2001:db8:1::", 48, "fe80::1", 2, 0);
  shm->routes6.slot[0] = route6("::ffff:1.2.3.4", 128, "::", 1, 1);
  shm->routes6.slot[1] = route6("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", 0xFFFFFFFF, "::1", 3, SHM_NO_SLOT);
  EXPECT_EQ(
      "route6 add 2001:db8:1:: 48 fe80::1 -n\n"
      "route6 add ::ffff:1.2.3.4 128 :: \n"
      "route6 add ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff -1 ::1 \n",
      written(__saveIpv6Routes));
}

TEST_F(ScriptTest, SingleRouteLines) {
  RouteEntry route = {quad("10.1.0.0"), quad("255.255.0.0"), quad("192.168.1.254"), 2, 0, 0};
  EXPECT_EQ("route add 10.1.0.0 255.255.0.0 192.168.1.254 -n\n",
            written([&](FILE* stream) { return __printRoute(stream, &route); }));
  Route6Entry route6Entry = route6("2001:db8::", 32, "fe80::1", 3, 0);
  EXPECT_EQ("route6 add 2001:db8:: 32 fe80::1 \n",
            written([&](FILE* stream) { return __printIpv6Route(stream, &route6Entry); }));
}

TEST_F(ScriptTest, DamagedRouteChainsEnd) {
  for (uint32_t head : {0u, 1024u, SHM_NO_SLOT, 0x80000000u}) {
    shm->routes.head = shm->routes6.head6 = head;
    EXPECT_EQ("", written(__saveRoutes));
    EXPECT_EQ("", written(__saveIpv6Routes));
  }
  shm->routes.head = shm->routes6.head6 = 5;
  shm->routes.slot[5] = {0, 0, 0, 3, 1, 5};
  shm->routes6.slot[5] = route6("::", 0, "::", 3, 5);
  EXPECT_EQ(1024 * strlen("route add 0.0.0.0 0.0.0.0 0.0.0.0 \n"), written(__saveRoutes).size());
  EXPECT_EQ(1024 * strlen("route6 add :: 0 :: \n"), written(__saveIpv6Routes).size());
  shm->routes.slot[5].next = 1024;
  shm->routes6.slot[5].next = 6;  // not in use
  EXPECT_EQ("route add 0.0.0.0 0.0.0.0 0.0.0.0 \n", written(__saveRoutes));
  EXPECT_EQ("route6 add :: 0 :: \n", written(__saveIpv6Routes));
}

FilterRule rule4() {
  FilterRule rule = {};
  rule.ipVersion = 4;
  rule.target = -1;
  rule.ruleAction = 3;
  return rule;
}

TEST_F(ScriptTest, DefaultRuleAloneGivesNoLine) { EXPECT_EQ("", written(__saveSARules)); }

TEST_F(ScriptTest, RuleAddressesByFamily) {
  FilterRule rule = rule4();
  EXPECT_EQ("rule add 1 -ipVersion 4 -proto ANY -b \n", line(rule));
  rule.srcAddr = quad("10.0.0.0");
  rule.dstAddr = quad("10.9.0.0");
  EXPECT_EQ("rule add 1 -ipVersion 4 -proto ANY -b \n", line(rule)) << "addresses without masks";
  rule.srcMask = quad("255.0.0.0");
  EXPECT_EQ("rule add 1 -ipVersion 4 -sa 10.0.0.0/255.0.0.0 -proto ANY -b \n", line(rule));
  rule.dstMask = quad("255.255.0.0");
  EXPECT_EQ("rule add 1 -ipVersion 4 -sa 10.0.0.0/255.0.0.0 -da 10.9.0.0/255.255.0.0 -proto ANY -b \n", line(rule));
  rule.ipVersion = 6;
  setIp6(rule.srcAddr6, "2001:db8::");
  rule.srcPrefixLen6 = 20;
  rule.dstPrefixLen6 = 0xFFFFFFFF;
  EXPECT_EQ("rule add 1 -ipVersion 6 -sa6 2001:db8::/20 -da6 ::/-1 -proto ANY -b \n", line(rule));
  for (uint32_t family : {0u, 1u, 5u, 0xFFFFFFFFu}) {
    rule.ipVersion = family;
    EXPECT_EQ("rule add 1 -ipVersion Any -proto ANY -b \n", line(rule));
  }
}

struct ProtocolRow {
  uint32_t proto;
  const char* word;
};

TEST_F(ScriptTest, RuleProtocols) {
  for (const ProtocolRow& row : {ProtocolRow{0, "ANY "}, {6, "TCP "}, {17, "UDP "}, {1, ""}, {0xFFFFFFFF, ""}}) {
    FilterRule rule = rule4();
    rule.proto = row.proto;
    EXPECT_EQ(std::string("rule add 1 -ipVersion 4 -proto ") + row.word + "-b \n", line(rule));
  }
}

struct PortRow {
  uint32_t proto;
  int32_t source, sourceEnd, destination, destinationEnd;
  const char* words;
};

TEST_F(ScriptTest, RulePorts) {
  const PortRow rows[] = {
      {0, 80, 81, 82, 83, "ANY "},
      {6, 0, 0, 80, 80, "TCP "},
      {6, 0, 9, 80, 90, "TCP "},
      {6, 5, 5, 0, 0, "TCP -srcPort 5 -destPort 0 "},
      {6, 5, 6, 80, 80, "TCP -srcPort 5 -srcPortEnd 6 -destPort 80 "},
      {6, 5, 5, 80, 90, "TCP -srcPort 5 -destPort 80 -destPortEnd 90 "},
      {17, 5, 0, 80, 0, "UDP -srcPort 5 -srcPortEnd 0 -destPort 80 -destPortEnd 0 "},
      {99, -1, INT32_MIN, INT32_MAX, 0, "-srcPort -1 -srcPortEnd -2147483648 -destPort 2147483647 -destPortEnd 0 "},
  };
  for (const PortRow& row : rows) {
    FilterRule rule = rule4();
    rule.proto = row.proto;
    rule.srcPort = row.source;
    rule.srcPortEnd = row.sourceEnd;
    rule.destPort = row.destination;
    rule.destPortEnd = row.destinationEnd;
    EXPECT_EQ(std::string("rule add 1 -ipVersion 4 -proto ") + row.words + "-b \n", line(rule));
  }
}

struct TargetRow {
  int32_t target;
  uint32_t accel;
  const char* words;
};

TEST_F(ScriptTest, RuleTargets) {
  const TargetRow rows[] = {
      {0, 1, "-d "},
      {-1, 1, "-b "},
      {-2, 2, "-p -3 "},
      {INT32_MIN, 1, "-p -3 "},
      {1, 1, "-p -3 -bw 64 "},
      {INT32_MAX, 1, "-p -3 -bw 64 "},
      {1, 2, "-p -3 -bw 64  -noAccel "},
      {1, 0, "-p -3 -bw 64  -noAccel "},
  };
  for (const TargetRow& row : rows) {
    FilterRule rule = rule4();
    rule.target = row.target;
    rule.accel = row.accel;
    rule.priority = -3;
    rule.bandwidth = 64999;
    EXPECT_EQ(std::string("rule add 1 -ipVersion 4 -proto ANY ") + row.words + "\n", line(rule));
  }
}

TEST_F(ScriptTest, RuleBandwidthIsDividedTowardsZero) {
  FilterRule rule = rule4();
  rule.target = 1;
  rule.accel = 1;
  rule.bandwidth = -1999;
  EXPECT_THAT(line(rule), EndsWith("-p 0 -bw -1 \n"));
  rule.bandwidth = INT32_MIN;
  EXPECT_THAT(line(rule), EndsWith("-p 0 -bw -2147483 \n"));
}

TEST_F(ScriptTest, RuleNotInService) {
  for (uint32_t status : {0u, 1u, 3u, 4u, 0xFFFFFFFFu}) {
    FilterRule rule = rule4();
    rule.ruleAction = status;
    EXPECT_EQ("rule add 1 -ipVersion 4 -proto ANY -b \n", line(rule));
  }
  FilterRule rule = rule4();
  rule.ruleAction = 2;
  EXPECT_EQ("rule add 1 -ipVersion 4 -proto ANY -b -NIS \n", line(rule));
}

TEST_F(ScriptTest, FullTableWithoutItsLastRule) {
  FilterRule longest;
  memset(&longest, 0xFF, sizeof longest);
  longest.ipVersion = 6;
  longest.srcPort = longest.destPort = longest.priority = longest.bandwidth = INT32_MIN;
  longest.target = 1;
  longest.ruleAction = 2;
  for (FilterRule& rule : shm->filterTable.rule) rule = longest;
  for (int32_t count : {8192, 8193, INT32_MAX}) {
    shm->filterTable.ruleCount = count;
    std::string text = written(__saveSARules);
    EXPECT_EQ(8191, std::count(text.begin(), text.end(), '\n'));
    std::string last = text.substr(text.rfind('\n', text.size() - 2) + 1);
    EXPECT_EQ(
        "rule add 8191 -ipVersion 6 -sa6 ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/-1 "
        "-da6 ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/-1 -proto -srcPort -2147483648 -srcPortEnd -1 "
        "-destPort -2147483648 -destPortEnd -1 -p -2147483648 -bw -2147483  -noAccel -NIS \n",
        last);
  }
  for (int32_t count : {1, 0, -1, INT32_MIN}) {
    shm->filterTable.ruleCount = count;
    EXPECT_EQ("", written(__saveSARules));
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
