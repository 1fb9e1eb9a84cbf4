// SPDX-License-Identifier: Apache-2.0
// What a saved configuration file looks like, to the byte.
#include <arpa/inet.h>
#include <limits.h>
#include <string.h>

#include "tests/support/addresses.h"
#include "tests/support/files.h"
#include "tests/support/records.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

std::string keywordColumn(const std::string& keyword) { return keyword + std::string(25 - keyword.size(), ' ') + " "; }

class WriterTest : public StoreTest {
 protected:
  static std::string saved() {
    EXPECT_EQ(0, save_shared_memory());
    return readFile(kConfigFile);
  }
  // The lines of a keyword, whole and in order.
  static std::string linesOf(const std::string& keyword) {
    std::string text = saved(), found;
    for (size_t at = 0, end; at < text.size(); at = end) {
      end = text.find('\n', at) + 1;
      if (text.compare(at, 26, keywordColumn(keyword)) == 0) found += text.substr(at, end - at);
    }
    return found;
  }
};

constexpr char kBlankFile[] =
    "LAN_NAME                  \n"
    "LAN_RATE                  0\n"
    "LAN_ADDR                  0.0.0.0\n"
    "LAN_MASK                  0.0.0.0\n"
    "LAN_GATEWAY               0.0.0.0\n"
    "LAN_LINK_SETTING          0\n"
    "MANAGEMENT_LINK_SETTING   0\n"
    "LAN_MTU                   0\n"
    "LAN_VLAN_ID               0\n"
    "INTERNET_NAME             \n"
    "INTERNET_RATE             0\n"
    "INTERNET_CONGESTION       0\n"
    "INTERNET_MTU              0\n"
    "WAN_VLAN_ID               0\n"
    "INTERNET_ADDR             0.0.0.0\n"
    "INTERNET_MASK             0.0.0.0\n"
    "INTERNET_GATEWAY          0.0.0.0\n"
    "INTERNET_LINK_SETTING     0\n"
    "BRIDGE_MASK               0.0.0.0\n"
    "FTW_CONFIG                0\n"
    "SNMP_VERSION              0\n"
    "SYS_NAME                  \n"
    "SYS_LOCATION              \n"
    "SYS_CONTACT               \n"
    "REBOOT_COUNT              0\n";

TEST_F(WriterTest, FreshStoreHasNoLineForSwitchesThatWereNeverSet) { EXPECT_EQ(kBlankFile, saved()); }

// Every field with a value, every table with an entry.
void fillStore() {
  ConfigRecord& c = shm->config;
  strcpy(c.lanInterfaceName, "eth1");
  c.lanLinkRate = 100000000;
  c.lanIpAddress = quad("192.168.1.1");
  c.lanIpAddressMask = quad("255.255.255.0");
  c.lanGateway = quad("192.168.1.254");
  c.lanLinkSetting = 120;
  c.managementLinkSetting = 20;
  c.lanMaximumTransferUnit = 1500;
  c.lanVlanId = 11;
  strcpy(c.wanInterfaceName, "eth0");
  c.wanLinkRate = 2000000;
  c.wanCongestionControl = 4;
  c.wanMaximumTransferUnit = 1400;
  c.wanVlanId = 12;
  c.wanIpAddress = quad("203.0.113.7");
  c.wanIpAddressMask = quad("255.255.255.248");
  c.wanGateway = quad("203.0.113.1");
  c.wanLinkSetting = 40;
  c.managementAddress = quad("10.1.1.1");
  c.managementAddressMask = quad("255.0.0.0");
  c.failToWireConfig = 1;
  c.compression = 1;
  c.loggingOperState = 2;
  c.snmpOperState = 3;
  c.httpOperState = 1;
  c.cliOperState = 2;
  c.kestroveOperState = 1;
  c.snmpVersion = 3;
  c.sshdOperState = 2;
  c.bannerOperState = 1;
  c.singleInterfaceMode = 2;
  c.pbrOperState = 3;
  strcpy(c.sysName, "unit seven");
  strcpy(c.sysLocation, "rack 3");
  strcpy(c.sysContact, "ops@example.com");
  c.kestroveRebootCount = 2;
  c.userCount = 1;
  c.users[0] = {"admin", 1, 1600000000, 999, 1500000000};
  shm->ip6Count = 1;
  setIp6(shm->ip6Address[0].address, "fd00::1");
  shm->ip6Address[0].prefixLength = 64;
  shm->managementAddressCount = 1;
  shm->managementAddress[0] = {4, 1, quad("10.0.0.9"), quad("255.255.255.0"), {}, 0, 4};
  shm->routes.slot[0] = {quad("10.2.0.0"), quad("255.255.0.0"), quad("192.168.1.253"), 3, 1, SHM_NO_SLOT};
  shm->routes6.slot[0] = linked(route6Record("2001:db8::", 32, "fd00::fe", SHM_ROUTE_INACTIVE));
  shm->filterTable.ruleCount = 2;
  shm->filterTable.rule[1] = shm->filterTable.rule[0];
  FilterRule& rule = shm->filterTable.rule[0];
  rule.srcAddr = quad("10.0.0.0");
  rule.srcMask = quad("255.0.0.0");
  rule.proto = 6;
  rule.destPort = 80;
  rule.destPortEnd = 443;
  rule.bandwidth = 256000;
}

constexpr char kFullFile[] =
    "LAN_NAME                  eth1\n"
    "LAN_RATE                  100000000\n"
    "LAN_ADDR                  192.168.1.1\n"
    "LAN_MASK                  255.255.255.0\n"
    "LAN_GATEWAY               192.168.1.254\n"
    "LAN_LINK_SETTING          120\n"
    "MANAGEMENT_LINK_SETTING   20\n"
    "LAN_MTU                   1500\n"
    "LAN_VLAN_ID               11\n"
    "INTERNET_NAME             eth0\n"
    "INTERNET_RATE             2000000\n"
    "INTERNET_CONGESTION       4\n"
    "INTERNET_MTU              1400\n"
    "WAN_VLAN_ID               12\n"
    "INTERNET_ADDR             203.0.113.7\n"
    "INTERNET_MASK             255.255.255.248\n"
    "INTERNET_GATEWAY          203.0.113.1\n"
    "INTERNET_LINK_SETTING     40\n"
    "BRIDGE_MASK               255.0.0.0\n"
    "FTW_CONFIG                1\n"
    "COMPRESSION               1\n"
    "EVENT_LOGGING             0\n"
    "CONFIG_BY_SNMP            2\n"
    "CONFIG_BY_WEB             1\n"
    "CONFIG_BY_SERIAL          0\n"
    "KESTROVE_OP_STATE         1\n"
    "SNMP_VERSION              3\n"
    "SSHD                      0\n"
    "BANNER                    1\n"
    "SINGLE_INTERFACE          0\n"
    "PBR                       2\n"
    "SYS_NAME                  unit seven\n"
    "SYS_LOCATION              rack 3\n"
    "SYS_CONTACT               ops@example.com\n"
    "USER_ACCOUNT              admin                     1            1600000000   1500000000\n"
    "MANAGEMENT_ADDR_6         fd00::1                          64\n"
    "MANAGEMENT_ADDR           4 10.0.0.9         255.255.255.0    4\n"
    "REBOOT_COUNT              2\n"
    "ROUTE                     10.2.0.0           255.255.0.0        192.168.1.253      3                  \n"
    "ROUTE6                    2001:db8::                       32  fd00::fe                         1           "
    "       \n"
    "SELEC_ACCEL               10.0.0.0         255.0.0.0        0.0.0.0          0.0.0.0          6         0      "
    "   0         80        443      8           NONE 256000    1         3        \n";

TEST_F(WriterTest, FullStoreHasEveryLineInOrder) {
  fillStore();
  EXPECT_EQ(kFullFile, saved());
}

TEST_F(WriterTest, KeysThatOnlyAHandOrTheFactorySetsAreNeverWritten) {
  fillStore();
  ConfigRecord& c = shm->config;
  for (char* name : {c.managementInterfaceName, c.physicalLanInterfaceName, c.bridgeRouterPhysicalName,
                     c.physicalWanInterfaceName}) {
    strcpy(name, "eth9");
  }
  c.lanSendBufferSize = c.lanReceiveBufferSize = c.wanSendBufferSize = c.wanReceiveBufferSize = 65536;
  c.lanCongestionControl = 3;
  c.cifsOperState = c.webCacheOperState = c.transparentBridgeOperState = 1;
  c.dnsAddress = quad("10.0.0.53");
  c.ddupOperState = 5;
  strcpy(shm->ddupStartupOptions, "-x");
  c.wanIpDefaultRtt = 300;
  for (char* text : {shm->oldAdminUsername, shm->oldAdminPassword, c.kestroveFullVersion, c.drelmFullVersion}) {
    strcpy(text, "4.1.10.5");
  }
  strcpy(c.sysDescription, "an appliance");
  c.productId = 6;
  EXPECT_EQ(kFullFile, saved());
}

TEST_F(WriterTest, NumbersAreSigned) {
  shm->config.lanLinkRate = 0xffffffff;
  shm->config.wanLinkRate = 0x80000000;
  shm->config.lanMaximumTransferUnit = 0x7fffffff;
  EXPECT_EQ("LAN_RATE                  -1\n", linesOf("LAN_RATE"));
  EXPECT_EQ("INTERNET_RATE             -2147483648\n", linesOf("INTERNET_RATE"));
  EXPECT_EQ("LAN_MTU                   2147483647\n", linesOf("LAN_MTU"));
}

TEST_F(WriterTest, BytesAreUnsigned) {
  shm->config.wanCongestionControl = 255;
  shm->config.snmpVersion = 200;
  EXPECT_EQ("INTERNET_CONGESTION       255\n", linesOf("INTERNET_CONGESTION"));
  EXPECT_EQ("SNMP_VERSION              200\n", linesOf("SNMP_VERSION"));
}

TEST_F(WriterTest, SwitchBeyondThreeHasNoLine) {
  for (int value : {0, 4, 5, 255}) {
    shm->config.sshdOperState = static_cast<uint8_t>(value);
    EXPECT_EQ("", linesOf("SSHD")) << value;
  }
}

TEST_F(WriterTest, TextsWithoutATerminatorAreBoundedByTheirFields) {
  memset(shm->config.lanInterfaceName, 'n', sizeof shm->config.lanInterfaceName);
  memset(shm->config.sysName, 's', sizeof shm->config.sysName);
  EXPECT_EQ("LAN_NAME                  " + std::string(16, 'n') + "\n", linesOf("LAN_NAME"));
  EXPECT_EQ("SYS_NAME                  " + std::string(256, 's') + "\n", linesOf("SYS_NAME"));
}

TEST_F(WriterTest, TextsAreWrittenUpToTheirFirstLineFeed) {
  strcpy(shm->config.sysContact, "x\nADMIN_USERNAME mallory\nADMIN_PASSWORD Passw0rd!");
  strcpy(shm->config.sysName, "\n");
  strcpy(shm->config.lanInterfaceName, "eth1\nSSHD 1");
  std::string text = saved();
  EXPECT_EQ(std::string::npos, text.find("ADMIN_"));
  EXPECT_EQ(std::string::npos, text.find("SSHD"));
  EXPECT_EQ("SYS_CONTACT               x\n", linesOf("SYS_CONTACT"));
  EXPECT_EQ("SYS_NAME                  \n", linesOf("SYS_NAME"));
  EXPECT_EQ("LAN_NAME                  eth1\n", linesOf("LAN_NAME"));
  EXPECT_STREQ("x\nADMIN_USERNAME mallory\nADMIN_PASSWORD Passw0rd!", shm->config.sysContact) << "kept whole";
}

TEST_F(WriterTest, UserNamesAreWrittenUpToTheirFirstSeparator) {
  shm->config.userCount = 4;
  shm->config.users[0] = {"mallory 1 0 0", 2, 0, 0, 0};
  shm->config.users[1] = {"trent\t1 0 0", 2, 0, 0, 0};
  shm->config.users[2] = {"peggy\nADMIN_USERNAME x", 2, 0, 0, 0};
  shm->config.users[3] = {" alice", 1, 0, 0, 0};
  EXPECT_EQ(
      "USER_ACCOUNT              mallory                   0            0            0\n"
      "USER_ACCOUNT              trent                     0            0            0\n"
      "USER_ACCOUNT              peggy                     0            0            0\n"
      "USER_ACCOUNT                                        1            0            0\n",
      linesOf("USER_ACCOUNT"));
}

TEST_F(WriterTest, CutTextsAreWarnedAboutOnceASave) {
  constexpr char kWarning[] =
      "warning: The configuration file holds texts up to their first line feed, user names up to a blank";
  clearSyslog();
  saved();
  EXPECT_TRUE(syslogLines().empty());
  strcpy(shm->config.sysName, "a\nb");
  strcpy(shm->config.sysContact, "a\nb");
  saved();
  EXPECT_EQ(std::vector<std::string>{kWarning}, syslogLines());
  memset(shm->config.sysName, 0, 4);
  memset(shm->config.sysContact, 0, 4);
  shm->config.users[1] = {"mallory 1 0 0", 2, 0, 0, 0};
  clearSyslog();
  saved();
  EXPECT_TRUE(syslogLines().empty()) << "nobody's name";
  shm->config.userCount = 2;
  saved();
  EXPECT_EQ(std::vector<std::string>{kWarning}, syslogLines());
}

TEST_F(WriterTest, UserAccountsStandInTableOrder) {
  shm->config.userCount = 3;
  shm->config.users[0] = {"first", 1, -1, 0, 0};
  shm->config.users[1] = {"second", 2, 5, 6, 7};
  shm->config.users[2] = {"", 0, INT_MIN, 0, INT_MAX};
  memset(shm->config.users[2].username, 'u', 32);
  EXPECT_EQ(
      "USER_ACCOUNT              first                     1            -1           0\n"
      "USER_ACCOUNT              second                    0            5            7\n"
      "USER_ACCOUNT              uuuuuuuuuuuuuuuuuuuuuuuuuuuuuuuu 2            -2147483648  2147483647\n",
      linesOf("USER_ACCOUNT"));
}

TEST_F(WriterTest, ManagementAddressesOfBothFamiliesAndOfNone) {
  shm->managementAddressCount = 3;
  shm->managementAddress[0] = {6, 2, 0, 0, {}, 64, 4};
  setIp6(shm->managementAddress[0].address6, "2001:db8:1:2:3:4:5:6");
  shm->managementAddress[1] = {4, 1, quad("255.255.255.255"), quad("255.255.255.255"), {}, 0, 1};
  shm->managementAddress[2] = {9, 1, quad("1.2.3.4"), 0, {}, 0, -1};
  EXPECT_EQ(
      "MANAGEMENT_ADDR           6 2001:db8:1:2:3:4:5:6             64 4\n"
      "MANAGEMENT_ADDR           4 255.255.255.255  255.255.255.255  1\n"
      "MANAGEMENT_ADDR           9 1.2.3.4          0.0.0.0          -1\n",
      linesOf("MANAGEMENT_ADDR"));
}

TEST_F(WriterTest, Ip6AddressLongerThanItsColumnIsNotCut) {
  shm->ip6Count = 2;
  setIp6(shm->ip6Address[0].address, "2001:1db8:1111:2222:3333:4444:5555:6666");
  shm->ip6Address[0].prefixLength = 128;
  setIp6(shm->ip6Address[1].address, "::");
  EXPECT_EQ(
      "MANAGEMENT_ADDR_6         2001:1db8:1111:2222:3333:4444:5555:6666 128\n"
      "MANAGEMENT_ADDR_6         ::                               0\n",
      linesOf("MANAGEMENT_ADDR_6"));
}

TEST_F(WriterTest, RoutesOfEveryStatusStandInListOrder) {
  shm->routes.head = 5;
  shm->routes.slot[5] = {quad("10.0.1.0"), quad("255.255.255.0"), quad("1.1.1.1"), 2, 1, 0};
  shm->routes.slot[0] = {quad("10.0.0.0"), quad("255.255.0.0"), quad("2.2.2.2"), 77, 1, 1023};
  shm->routes.slot[1023] = {0, 0, quad("3.3.3.3"), 3, 1, SHM_NO_SLOT};
  EXPECT_EQ(
      "ROUTE                     10.0.1.0           255.255.255.0      1.1.1.1            2                  \n"
      "ROUTE                     10.0.0.0           255.255.0.0        2.2.2.2            77                 \n"
      "ROUTE                     0.0.0.0            0.0.0.0            3.3.3.3            3                  \n",
      linesOf("ROUTE"));
}

TEST_F(WriterTest, EmptyRouteListsHaveNoRows) {
  for (uint32_t head : {0u, 1023u, 1024u, SHM_NO_SLOT}) {
    shm->routes.head = shm->routes6.head6 = head;
    EXPECT_EQ(kBlankFile, saved()) << head;
  }
}

TEST_F(WriterTest, DamagedChainEndsAfterAsManyRowsAsThereAreSlots) {
  shm->routes.slot[0] = {1, 0, 0, 3, 1, 0};
  Route6Entry& route = shm->routes6.slot[0];
  route.inUse = 1;
  route.next = 0;
  std::string text = saved();
  EXPECT_EQ(strlen(kBlankFile) + 1024 * (103 + 116), text.size());
}

TEST_F(WriterTest, DamagedCountsAreHeldWithinTheirTables) {
  shm->config.userCount = shm->ip6Count = shm->managementAddressCount = shm->filterTable.ruleCount = INT_MAX;
  std::string text = saved();
  auto rows = [&text](const char* keyword) {
    int count = 0;
    for (size_t at = text.find(keyword); at != std::string::npos; at = text.find(keyword, at + 1)) ++count;
    return count;
  };
  EXPECT_EQ(5, rows("\nUSER_ACCOUNT "));
  EXPECT_EQ(6, rows("\nMANAGEMENT_ADDR_6 "));
  EXPECT_EQ(7, rows("\nMANAGEMENT_ADDR "));
  EXPECT_EQ(8191, rows("\nSELEC_ACCEL "));
  shm->config.userCount = shm->ip6Count = shm->managementAddressCount = shm->filterTable.ruleCount = INT_MIN;
  EXPECT_EQ(kBlankFile, saved());
}

FilterRule& addRuleOf(uint32_t family) {
  FilterTable& table = shm->filterTable;
  table.rule[table.ruleCount] = table.rule[table.ruleCount - 1];
  FilterRule& rule = table.rule[table.ruleCount++ - 1];
  rule = tcpRule();
  rule.ipVersion = family;
  rule.srcPort = 1;
  rule.srcPortEnd = 65535;
  rule.destPort = 80;
  rule.destPortEnd = 81;
  rule.priority = 5;
  rule.bandwidth = 10000;
  return rule;
}

TEST_F(WriterTest, DefaultRuleIsNeverWritten) {
  for (int count : {1, 0}) {
    shm->filterTable.ruleCount = count;
    EXPECT_EQ(kBlankFile, saved()) << count;
  }
}

TEST_F(WriterTest, RuleKeywordFollowsTheFamily) {
  addRuleOf(4).srcAddr = quad("255.255.255.255");
  FilterRule& six = addRuleOf(6);
  setIp6(six.srcAddr6, "2001:db8::1");
  six.srcPrefixLen6 = 128;
  six.dstPrefixLen6 = 9;
  addRuleOf(1);
  addRuleOf(77);
  std::string common =
      " 6         1         65535     80        81       5           NONE 10000     1         3        \n";
  EXPECT_EQ("SELEC_ACCEL               255.255.255.255  0.0.0.0          0.0.0.0          0.0.0.0         " + common +
                "SELEC_ACCEL_V6            2001:db8::1                              128 ::                           "
                "            9" +
                common + "SELEC_ACCEL_ANY          " + common +
                "SELEC_ACCEL               0.0.0.0          0.0.0.0          0.0.0.0          0.0.0.0         " +
                common,
            saved().substr(strlen(kBlankFile)));
}

TEST_F(WriterTest, TargetWordsAndTheirPriorities) {
  struct {
    int target;
    int priority;
    int column;
    const char* word;
  } const rows[] = {
      {0, 5, -5, "DROP"}, {-1, 7, -7, "BRIDGE"},         {1, 8, 8, "NONE"},    {2, -8, -8, "NONE"}, {-2, 3, 3, "NONE"},
      {0, -4, 4, "DROP"}, {0, INT_MIN, INT_MIN, "DROP"}, {-1, 0, 0, "BRIDGE"},
  };
  for (const auto& row : rows) {
    shm->filterTable.ruleCount = 1;
    FilterRule& rule = addRuleOf(1);
    rule.target = row.target;
    rule.priority = row.priority;
    char line[200];
    snprintf(line, sizeof line, "%-25s %-9d %-9d %-9d %-9d %-9d%-9d %6s %-9d %-9d %-9d\n", "SELEC_ACCEL_ANY", 6, 1,
             65535, 80, 81, row.column, row.word, 10000, 1, 3);
    EXPECT_EQ(line, linesOf("SELEC_ACCEL_ANY"));
  }
}

TEST_F(WriterTest, LastPortAndPriorityRunTogetherWhenThePortFillsItsColumn) {
  FilterRule& rule = addRuleOf(1);
  rule.destPortEnd = 123456789;
  EXPECT_EQ(
      "SELEC_ACCEL_ANY           6         1         65535     80        1234567895           NONE 10000     1         "
      "3        \n",
      linesOf("SELEC_ACCEL_ANY"));
}

TEST_F(WriterTest, WideNumbersMoveTheColumnsBehindThem) {
  FilterRule& rule = addRuleOf(1);
  rule.proto = 0xffffffff;
  rule.srcPort = INT_MIN;
  rule.bandwidth = INT_MAX;
  rule.accel = 0x80000000;
  EXPECT_EQ(
      "SELEC_ACCEL_ANY           -1        -2147483648 65535     80        81       5           NONE 2147483647 "
      "-2147483648 3        \n",
      linesOf("SELEC_ACCEL_ANY"));
}

}  // namespace
}  // namespace kestrove::testing
