// SPDX-License-Identifier: Apache-2.0
// Rows of a configuration file and the tables that they fill.
#include <arpa/inet.h>
#include <limits.h>
#include <string.h>

#include "tests/config/config_fixture.h"
#include "tests/support/addresses.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

class RowsTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    manAddrEnt = {};
  }
  // Nothing of the store changes and nothing is said.
  static void expectDropped(const std::string& line) {
    auto before = std::string(reinterpret_cast<const char*>(shm), sizeof *shm);
    load(line + "\n");
    EXPECT_EQ(0, memcmp(before.data(), shm, sizeof *shm)) << line;
    EXPECT_TRUE(syslogLines().empty()) << line;
  }
  static const RouteEntry& firstRoute() { return shm->routes.slot[shm->routes.head]; }
  static const Route6Entry& firstRoute6() { return shm->routes6.slot[shm->routes6.head6]; }
};

TEST_F(RowsTest, RuleBesideADamagedCountHasNoPlace) {
  for (int count : {INT_MIN, -1, 0}) {
    shm->filterTable.ruleCount = count;
    expectDropped("SELEC_ACCEL_ANY 6 0 0 80 80 1 NONE 20000 1 3");
  }
}

TEST_F(RowsTest, RouteOfEachStatusIsAdded) {
  load(
      "ROUTE 10.1.0.0 255.255.0.0 192.168.1.1 1\nROUTE 10.2.0.0\t255.255.0.0  192.168.1.2 2\n"
      "ROUTE 10.3.0.0 255.255.0.0 192.168.1.3 3 and more\n");
  RouteEntry route = {};
  ASSERT_EQ(0, getRouteTableEntry(quad("10.1.0.0"), quad("255.255.0.0"), &route));
  EXPECT_EQ(quad("192.168.1.1"), route.gateway);
  EXPECT_EQ(1u, route.status);
  ASSERT_EQ(0, getRouteTableEntry(quad("10.2.0.0"), quad("255.255.0.0"), &route));
  EXPECT_EQ(2u, route.status);
  ASSERT_EQ(0, getRouteTableEntry(quad("10.3.0.0"), quad("255.255.0.0"), &route));
  EXPECT_EQ(3u, route.status);
}

TEST_F(RowsTest, RouteOfAnotherStatusOrTooShortIsDropped) {
  for (const char* status : {"0", "4", "-1", "x", "99999999999"}) {
    expectDropped("ROUTE 10.1.0.0 255.255.0.0 192.168.1.1 " + std::string(status));
  }
  expectDropped("ROUTE");
  expectDropped("ROUTE 10.1.0.0");
  expectDropped("ROUTE 10.1.0.0 255.255.0.0");
  expectDropped("ROUTE 10.1.0.0 255.255.0.0 192.168.1.1");
}

TEST_F(RowsTest, RouteAddressesThatDoNotParseAreZero) {
  load("ROUTE ten 255.255.0.0 300.1.1.1 3\n");
  EXPECT_EQ(0u, firstRoute().destination);
  EXPECT_EQ(quad("255.255.0.0"), firstRoute().netmask);
  EXPECT_EQ(0u, firstRoute().gateway);
}

TEST_F(RowsTest, Route6OfEachStatusIsAdded) {
  for (uint32_t status : {1u, 2u, 3u}) {
    load("ROUTE6 2001:db8:" + std::to_string(status) + ":: 48 fd00::fe " + std::to_string(status) + " behind\n");
    EXPECT_EQ("2001:db8:" + std::to_string(status) + "::", ip6Text(firstRoute6().destination));
    EXPECT_EQ(48u, firstRoute6().prefixLength);
    EXPECT_EQ("fd00::fe", ip6Text(firstRoute6().gateway));
    EXPECT_EQ(status, firstRoute6().status);
  }
}

TEST_F(RowsTest, Route6OfAnotherStatusOrTooShortIsDropped) {
  expectDropped("ROUTE6 2001:db8:: 48 fd00::fe 0");
  expectDropped("ROUTE6 2001:db8:: 48 fd00::fe 4");
  expectDropped("ROUTE6 2001:db8:: 48 fd00::fe");
  expectDropped("ROUTE6 2001:db8:: 48");
  expectDropped("ROUTE6 2001:db8::");
  expectDropped("ROUTE6");
}

TEST_F(RowsTest, Route6AddressesThatDoNotParseAreZero) {
  load("ROUTE6 10.0.0.1 0 :g: 2\n");
  EXPECT_EQ("::", ip6Text(firstRoute6().destination));
  EXPECT_EQ("::", ip6Text(firstRoute6().gateway));
  EXPECT_EQ(2u, firstRoute6().status);
}

TEST_F(RowsTest, ManagementAddressesOfBothFamilies) {
  load("MANAGEMENT_ADDR 4 10.1.1.1 255.255.255.0 4\nMANAGEMENT_ADDR 6 fd00::1 64 1 behind\n");
  ASSERT_EQ(2, shm->managementAddressCount);
  const ManagementAddress& four = shm->managementAddress[0];
  EXPECT_EQ(4u, four.ipVersion);
  EXPECT_EQ(quad("10.1.1.1"), four.address);
  EXPECT_EQ(quad("255.255.255.0"), four.mask);
  EXPECT_EQ(4, four.interfaceKind);
  EXPECT_EQ("::", ip6Text(four.address6));
  const ManagementAddress& six = shm->managementAddress[1];
  EXPECT_EQ(6u, six.ipVersion);
  EXPECT_EQ("fd00::1", ip6Text(six.address6));
  EXPECT_EQ(64u, six.prefixLength6);
  EXPECT_EQ(1, six.interfaceKind);
  EXPECT_EQ(0u, six.address);
}

TEST_F(RowsTest, ManagementAddressOfAnotherFamilyIsReadAsIpv4) {
  load("MANAGEMENT_ADDR 9 10.1.1.1 255.255.255.0 4\n");
  ASSERT_EQ(1, shm->managementAddressCount);
  EXPECT_EQ(9u, shm->managementAddress[0].ipVersion);
  EXPECT_EQ(quad("10.1.1.1"), shm->managementAddress[0].address);
}

TEST_F(RowsTest, ManagementAddressRowLeavesTheEntryOfTheBridgeAlone) {
  load("MANAGEMENT_ADDR 4 10.1.1.1 255.255.255.0 4\n");
  EXPECT_EQ(0u, manAddrEnt.address);
  EXPECT_EQ(0u, manAddrEnt.mask);
}

TEST_F(RowsTest, ManagementAddressRowThatIsShortIsDropped) {
  for (const char* line :
       {"MANAGEMENT_ADDR", "MANAGEMENT_ADDR 4", "MANAGEMENT_ADDR 4 10.1.1.1", "MANAGEMENT_ADDR 4 10.1.1.1 255.0.0.0",
        "MANAGEMENT_ADDR 6", "MANAGEMENT_ADDR 6 fd00::1", "MANAGEMENT_ADDR 6 fd00::1 64"}) {
    expectDropped(line);
  }
}

TEST_F(RowsTest, Ip6AddressesAreAdded) {
  load("MANAGEMENT_ADDR_6 fd00::1 64\nMANAGEMENT_ADDR_6 fd00::2 128 behind\nMANAGEMENT_ADDR_6 nonsense 1\n");
  ASSERT_EQ(3, shm->ip6Count);
  EXPECT_EQ("fd00::1", ip6Text(shm->ip6Address[0].address));
  EXPECT_EQ(64u, shm->ip6Address[0].prefixLength);
  EXPECT_EQ(128u, shm->ip6Address[1].prefixLength);
  EXPECT_EQ("::", ip6Text(shm->ip6Address[2].address));
}

TEST_F(RowsTest, Ip6AddressRowThatIsShortIsDropped) {
  expectDropped("MANAGEMENT_ADDR_6");
  expectDropped("MANAGEMENT_ADDR_6 fd00::1");
}

TEST_F(RowsTest, SecondBridgeLineAddsTheManagementEntry) {
  load("BRIDGE_ADDR 10.1.1.1\n");
  EXPECT_EQ(quad("10.1.1.1"), shm->config.managementAddress);
  EXPECT_EQ(0, shm->managementAddressCount);
  load("BRIDGE_MASK 255.255.255.0\n");
  EXPECT_EQ(quad("255.255.255.0"), shm->config.managementAddressMask);
  ASSERT_EQ(1, shm->managementAddressCount);
  EXPECT_EQ(4u, shm->managementAddress[0].ipVersion);
  EXPECT_EQ(4, shm->managementAddress[0].interfaceKind);
  EXPECT_EQ(quad("10.1.1.1"), shm->managementAddress[0].address);
  EXPECT_EQ(quad("255.255.255.0"), shm->managementAddress[0].mask);
}

TEST_F(RowsTest, EveryFurtherBridgeLineAddsTheEntryAgain) {
  load("BRIDGE_MASK 255.255.255.0\nBRIDGE_ADDR 10.1.1.1\n");
  shm_errno = 0;
  load("BRIDGE_ADDR 10.1.1.1\n");  // a second loading meets what the first one left in this process
  EXPECT_EQ(uint32_t(SHM_EEXIST), shm_errno);
  EXPECT_EQ(1, shm->managementAddressCount);
  load("BRIDGE_ADDR 10.2.2.2\n");
  EXPECT_EQ(2, shm->managementAddressCount);
}

TEST_F(RowsTest, BridgeValueThatIsBadKeepsBothAndStillAdds) {
  load("BRIDGE_ADDR 10.1.1.1\nBRIDGE_MASK 255.255.255.0\n");
  shm->managementAddressCount = 0;
  load("BRIDGE_ADDR nonsense\n");
  EXPECT_EQ(1, shm->managementAddressCount);
  EXPECT_EQ(quad("10.1.1.1"), manAddrEnt.address);
  EXPECT_EQ(quad("10.1.1.1"), shm->config.managementAddress);
  load("BRIDGE_MASK\n");
  EXPECT_EQ(quad("255.255.255.0"), shm->config.managementAddressMask);
  EXPECT_EQ(uint32_t(SHM_EINVAL), shm_errno);
}

TEST_F(RowsTest, UserAccountsAreAddedAndEveryRowWarns) {
  load(
      "USER_ACCOUNT              admin                     1            1600000000   1500000000\n"
      "USER_ACCOUNT operator 0 -5 6 behind\nUSER_ACCOUNT visitor 7 x y\n");
  ASSERT_EQ(3, shm->config.userCount);
  EXPECT_EQ(1, shm->config.adminUserCount);
  const UserAccount* users = shm->config.users;
  EXPECT_STREQ("admin", users[0].username);
  EXPECT_EQ(1, users[0].superUser);
  EXPECT_EQ(1600000000, users[0].lastLoginSeconds);
  EXPECT_EQ(0, users[0].lastLoginMicroseconds);
  EXPECT_EQ(1500000000, users[0].lastPasswdChange);
  EXPECT_EQ(2, users[1].superUser);
  EXPECT_EQ(-5, users[1].lastLoginSeconds);
  EXPECT_EQ(6, users[1].lastPasswdChange);
  EXPECT_EQ(3, users[2].superUser);
  EXPECT_EQ(0, users[2].lastLoginSeconds);
  std::vector<std::string> warnings;
  for (const std::string& line : syslogLines()) {
    if (line.find("truncated") != std::string::npos) warnings.push_back(line);
  }
  std::string text = ": Warning: truncated value for USER_ACCOUNT parameter, max length ";
  EXPECT_EQ((std::vector<std::string>{"err: /tmp/input.conf: line 1" + text + "5.\n",
                                      "err: /tmp/input.conf: line 2" + text + "8.\n",
                                      "err: /tmp/input.conf: line 3" + text + "7.\n"}),
            warnings);
}

TEST_F(RowsTest, UserAccountThatIsOnlyANameIsDroppedWithoutAWarning) {
  expectDropped("USER_ACCOUNT");
  expectDropped("USER_ACCOUNT admin");
  expectDropped("USER_ACCOUNT admin ");
}

TEST_F(RowsTest, UserAccountThatIsShortWarnsAndIsDropped) {
  for (const char* line : {"USER_ACCOUNT admin 1", "USER_ACCOUNT admin 1 2", "USER_ACCOUNT admin  "}) {
    load(line);
    EXPECT_EQ(std::vector<std::string>{"err: /tmp/input.conf: line 1: Warning: truncated value for USER_ACCOUNT "
                                       "parameter, max length 5.\n"},
              syslogLines());
    EXPECT_EQ(0, shm->config.userCount);
  }
}

TEST_F(RowsTest, UserNameOf31CharactersFitsAndLongerOnesAreRefused) {
  load("USER_ACCOUNT " + std::string(31, 'u') + " 1 0 0\n");
  ASSERT_EQ(1, shm->config.userCount);
  EXPECT_EQ(std::string(31, 'u'), shm->config.users[0].username);
  for (size_t length : {32u, 33u, 400u}) {
    shm_errno = 0;
    load("USER_ACCOUNT " + std::string(length, 'v') + " 1 0 0\n");
    EXPECT_EQ(uint32_t(SHM_ERANGE), shm_errno);
    EXPECT_EQ(1, shm->config.userCount);
  }
}

class RuleRowsTest : public RowsTest {
 protected:
  static const FilterRule& rule(int position) { return shm->filterTable.rule[position]; }
  static int count() { return shm->filterTable.ruleCount; }
};

TEST_F(RuleRowsTest, Ipv4RuleTakesItsColumnsInOrder) {
  load("SELEC_ACCEL 10.0.0.0 255.0.0.0 192.168.1.0 255.255.255.0 6 1 2 3 4 5 NONE 256000 2 2 behind\n");
  ASSERT_EQ(2, count());
  EXPECT_EQ(4u, rule(0).ipVersion);
  EXPECT_EQ(quad("10.0.0.0"), rule(0).srcAddr);
  EXPECT_EQ(quad("255.0.0.0"), rule(0).srcMask);
  EXPECT_EQ(quad("192.168.1.0"), rule(0).dstAddr);
  EXPECT_EQ(quad("255.255.255.0"), rule(0).dstMask);
  EXPECT_EQ(6u, rule(0).proto);
  EXPECT_EQ(1, rule(0).srcPort);
  EXPECT_EQ(2, rule(0).srcPortEnd);
  EXPECT_EQ(3, rule(0).destPort);
  EXPECT_EQ(4, rule(0).destPortEnd);
  EXPECT_EQ(5, rule(0).priority);
  EXPECT_EQ(1, rule(0).target);
  EXPECT_EQ(256000, rule(0).bandwidth);
  EXPECT_EQ(2u, rule(0).accel);
  EXPECT_EQ(2u, rule(0).ruleAction);
  EXPECT_EQ(0u, rule(0).order);
}

std::string anyRow(const std::string& priority, const std::string& target, const std::string& action) {
  return "SELEC_ACCEL_ANY 6 0 0 80 80 " + priority + " " + target + " 20000 1 " + action + "\n";
}

TEST_F(RuleRowsTest, NumbersOfARowAreReadAsEverywhereInTheFile) {
  struct {
    const char* word;
    int value;
  } const words[] = {
      {"0080", 80},
      {"+7", 7},
      {"-5", -5},
      {"12x", 12},
      {"x", 0},
      {"999999999", 999999999},
      {"2147483647", INT_MAX},
      {"2147483648", INT_MAX},
      {"-9999999999", INT_MIN},
      {"000000000012", 12},
  };
  for (const auto& row : words) {
    load("SELEC_ACCEL_ANY 6 " + std::string(row.word) + "\t2 " + row.word + "  4 5 NONE 20000 1 3\n");
    EXPECT_EQ(row.value, rule(0).srcPort) << row.word;
    EXPECT_EQ(2, rule(0).srcPortEnd) << row.word;
    EXPECT_EQ(row.value, rule(0).destPort) << row.word;
    deleteRule(0);
  }
}

TEST_F(RuleRowsTest, AddressesOfARowAreReadAsEverywhereInTheFile) {
  for (const char* word : {"10.1.2.0", "010.001.002.000", "10.1.2", "10.1.2.0.0", "10.1.2.256", "10.1.2.0x",
                           "1000.1.2.0", "10..2.0", "10.1.2.0000", ".10.1.2.0"}) {
    shm->config.lanIpAddress = 0;
    load("LAN_ADDR " + std::string(word) + "\nSELEC_ACCEL " + word + "\t255.0.0.0 " + word +
         " 255.0.0.0 6 1 2 3 4 5 NONE " + "20000 1 2\n");
    ASSERT_EQ(2, count()) << word;
    EXPECT_EQ(shm->config.lanIpAddress, rule(0).srcAddr) << word;
    EXPECT_EQ(shm->config.lanIpAddress, rule(0).dstAddr) << word;
    EXPECT_EQ(quad("255.0.0.0"), rule(0).srcMask) << word;
    deleteRule(0);
  }
}

TEST_F(RuleRowsTest, RowsKeepTheirFileOrderBeforeTheDefaultRule) {
  load(anyRow("1", "NONE", "3") + anyRow("2", "NONE", "3") + anyRow("3", "NONE", "3"));
  ASSERT_EQ(4, count());
  EXPECT_EQ(1, rule(0).priority);
  EXPECT_EQ(2, rule(1).priority);
  EXPECT_EQ(3, rule(2).priority);
  EXPECT_EQ(8, rule(3).priority);
}

TEST_F(RuleRowsTest, TargetWordsSetTargetAndSignOfThePriority) {
  struct {
    const char* word;
    const char* column;
    int target;
    int priority;
  } const rows[] = {
      {"DROP", "-5", 0, 5}, {"BRIDGE", "-7", -1, 7}, {"NONE", "8", 1, 8},  {"drop", "4", 1, 4},
      {"DROP", "3", 0, -3}, {"0", "-2", 1, -2},      {"DROPS", "1", 1, 1}, {"BRIDGE", "-2147483648", -1, INT_MIN},
  };
  for (const auto& row : rows) {
    shm->filterTable.ruleCount = 1;
    load(anyRow(row.column, row.word, "3"));
    ASSERT_EQ(2, count());
    EXPECT_EQ(row.target, rule(0).target) << row.word;
    EXPECT_EQ(row.priority, rule(0).priority) << row.word;
  }
}

TEST_F(RuleRowsTest, RuleOfAnotherStatusIsDropped) {
  for (const char* action : {"0", "4", "-1", "x"}) {
    load(anyRow("1", "NONE", action));
    EXPECT_EQ(1, count()) << action;
    EXPECT_TRUE(syslogLines().empty());
  }
  for (const char* action : {"1", "2", "3"}) load(anyRow("1", "NONE", action));
  EXPECT_EQ(4, count());
}

TEST_F(RuleRowsTest, RowThatEndsEarlyIsDropped) {
  std::string line = "SELEC_ACCEL 10.0.0.0 255.0.0.0 192.168.1.0 255.255.255.0 6 1 2 3 4 5 NONE 256000 2 3";
  while (line != "SELEC_ACCEL") {
    line = line.substr(0, line.rfind(' '));
    expectDropped(line);
  }
}

TEST_F(RuleRowsTest, PriorityThatRanIntoTheLastPortMakesTheRowShort) {
  expectDropped(
      "SELEC_ACCEL_ANY           6         1         65535     80        1234567895           NONE 10000     1 "
      "        3        ");
}

TEST_F(RuleRowsTest, AnyRuleIsIpv4WithoutIpv6Support) {
  load(anyRow("1", "NONE", "3"));
  EXPECT_EQ(4u, rule(0).ipVersion);
  EXPECT_EQ(0u, rule(0).srcMask);
  shm->config.ipv6Support = SHM_ON;
  shm->filterTable.ruleCount = 1;
  load(anyRow("1", "NONE", "3"));
  EXPECT_EQ(1u, rule(0).ipVersion);
}

constexpr char kRow6[] = "SELEC_ACCEL_V6 2001:db8::1 64 fd00::2 48 6 1 2 3 4 5 NONE 256000 2 2 behind\n";

TEST_F(RuleRowsTest, Ipv6RuleIsIgnoredWithoutIpv6Support) {
  for (uint32_t support : {0u, 2u, 3u}) {
    shm->config.ipv6Support = support;
    ::testing::internal::CaptureStdout();
    load(kRow6);
    EXPECT_EQ("", ::testing::internal::GetCapturedStdout());
    EXPECT_EQ(1, count());
    EXPECT_TRUE(syslogLines().empty());
  }
}

TEST_F(RuleRowsTest, Ipv6RuleTakesItsColumnsAndPrintsItsPrefix) {
  shm->config.ipv6Support = SHM_ON;
  ::testing::internal::CaptureStdout();
  load(kRow6);
  EXPECT_EQ("IPv6 RulesourceRoutingPrefix: 64\n", ::testing::internal::GetCapturedStdout());
  ASSERT_EQ(2, count());
  EXPECT_EQ(6u, rule(0).ipVersion);
  EXPECT_EQ("2001:db8::1", ip6Text(rule(0).srcAddr6));
  EXPECT_EQ(64u, rule(0).srcPrefixLen6);
  EXPECT_EQ("fd00::2", ip6Text(rule(0).dstAddr6));
  EXPECT_EQ(48u, rule(0).dstPrefixLen6);
  EXPECT_EQ(6u, rule(0).proto);
  EXPECT_EQ(4, rule(0).destPortEnd);
  EXPECT_EQ(5, rule(0).priority);
  EXPECT_EQ(2u, rule(0).ruleAction);
}

TEST_F(RuleRowsTest, Ipv6RowThatEndsEarlyPrintsWhatItReached) {
  shm->config.ipv6Support = SHM_ON;
  struct {
    const char* line;
    const char* printed;
  } const rows[] = {{"SELEC_ACCEL_V6\n", "IPv6 Rule"},
                    {"SELEC_ACCEL_V6 fd00::1\n", "IPv6 Rule"},
                    {"SELEC_ACCEL_V6 fd00::1 -3 fd00::2 1\n", "IPv6 RulesourceRoutingPrefix: -3\n"}};
  for (const auto& row : rows) {
    ::testing::internal::CaptureStdout();
    load(row.line);
    EXPECT_EQ(row.printed, ::testing::internal::GetCapturedStdout());
    EXPECT_EQ(1, count());
  }
}

TEST_F(RuleRowsTest, RuleThatTheTableRefusesIsLeftOut) {
  load("SELEC_ACCEL 10.0.0.0 255.0.255.0 0.0.0.0 0.0.0.0 6 0 0 0 0 5 NONE 256000 1 3\n");
  EXPECT_EQ(1, count());
  EXPECT_EQ(uint32_t(SHM_EMASK), shm_errno);
}

}  // namespace
}  // namespace kestrove::testing
