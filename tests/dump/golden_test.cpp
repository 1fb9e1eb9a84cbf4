// SPDX-License-Identifier: Apache-2.0
// The whole dump of a store that is filled by hand, as one text.
#include "tests/dump/dump_fixture.h"

namespace kestrove::testing {
namespace {

template <size_t N>
void put(char (&field)[N], const char* text) {
  memset(field, 0, N);
  memcpy(field, text, std::min(strlen(text), N));
}

void fillHead() {
  shm->operationalState = SHM_STATE_DEBUG;
  ConfigRecord& config = shm->config;
  config.userCount = 2;
  config.adminUserCount = 1;
  put(config.users[0].username, "admin");
  config.users[0].superUser = 1;
  config.users[0].lastLoginSeconds = 1300094102;
  config.users[0].lastPasswdChange = 1300000000;
  put(config.users[2].username, "abcdefghijklmnopqrstuvwxyz012345");
  config.users[2].superUser = -7;
  config.users[2].lastLoginSeconds = -1;
  config.users[2].lastPasswdChange = -2;
}

void fillVersions() {
  ConfigRecord& config = shm->config;
  put(config.kestroveFullVersion, "4.1.10.5");
  put(config.kestroveVersion, "4.1.10");
  put(config.drelmFullVersion, "2.0.0.9");
  put(config.drelmVersion, "2.0");
  config.productId = 5;
  config.hardwarePlatform = 14;
  put(config.unitId, "unit 7");
}

void fillSwitches() {
  ConfigRecord& config = shm->config;
  config.compression = 1;
  config.failToWireAvailable = 2;
  config.failToWireStatus = 0xA;
  config.snmpOperState = 3;
  config.httpOperState = 4;
  put(config.httpEncryptedId, "id");
  config.httpSessionTimeout = -30;
  config.cliOperState = 5;
  config.kestroveOperState = 6;
  config.loggingOperState = 1;
  config.sshdOperState = 2;
  config.bannerOperState = 1;
  config.cifsOperState = 2;
  config.webCacheOperState = 1;
  config.ddupOperState = 5;
  put(shm->ddupStartupOptions, "-x -y");
  config.singleInterfaceMode = 2;
  config.pbrOperState = 1;
  config.ipv6Support = 1;
  config.wanOptSupport = 2;
  config.minRate = 256000;
  config.minMtu = 128;
  config.idleTimeout = 4000000000u;
  config.transparentBridgeOperState = 1;
}

void fillLan() {
  ConfigRecord& config = shm->config;
  config.lanCongestionControl = 2;
  config.lanLinkRate = 100000000;
  config.lanSendBufferSize = 1;
  config.lanReceiveBufferSize = 2;
  config.lanMaximumTransferUnit = 1500;
  config.lanIpAddress = quad("10.1.2.3");
  config.lanIpAddressMask = quad("255.255.255.0");
  config.lanBroadcastAddress = quad("10.1.2.255");
  config.lanVlanId = 12;
  put(config.physicalLanInterfaceName, "eth1");
  put(config.lanInterfaceName, "0123456789abcdef");
  memcpy(shm->lanHardwareAddress, "\x00\x06\xb0\xab\xcd\xef", 6);
  config.lanLinkSetting = 100;
}

void fillWan() {
  ConfigRecord& config = shm->config;
  config.wanCongestionControl = 4;
  config.wanLinkRate = 2000000;
  config.wanSendBufferSize = 3;
  config.wanReceiveBufferSize = 4;
  config.wanMaximumTransferUnit = 1400;
  config.wanIpDefaultRtt = 250;
  config.wanIpAddress = quad("192.168.1.2");
  config.wanIpAddressMask = quad("255.255.0.0");
  config.wanBroadcastAddress = quad("192.168.255.255");
  config.wanVlanId = 13;
  put(config.physicalWanInterfaceName, "eth0");
  put(config.wanInterfaceName, "eth0.13");
  memcpy(shm->wanHardwareAddress, "\x01\x02\x03\x04\x05\xfe", 6);
  config.wanLinkSetting = 1;
  memcpy(config.gatewayId, "\xff\x0a\x0b\x0c", 4);
}

void fillTail() {
  ConfigRecord& config = shm->config;
  config.managementAddress = quad("172.16.0.1");
  config.managementAddressMask = quad("255.240.0.0");
  config.managementBroadcastAddress = quad("172.31.255.255");
  memcpy(shm->managementHardwareAddress, "\xaa\xbb\xcc\xdd\xee\xff", 6);
  put(config.sysName, "name");
  put(config.sysLocation, "location");
  put(config.sysContact, "contact");
  put(config.sysDescription, "description");
  shm->loginFrom = 4;
}

void fillCounters() {
  StatisticsBlock& block = shm->statistics;
  block.counterLastResetTime = 4000000001u;
  block.accumulationInterval = 10;
  block.accumulatedIntervals = 18446744073709551615u;
  block.maxTcpSessionInitiationsPerSecond = -1;
  block.maxTcpSessionTerminationsPerSecond = 2;
  block.totalTcpSessionRequestsFailed = 5000000003;
  block.totalTcpSessionsTimedOut = 4;
  block.totalTcpSegmentsBadChecksum = 5;
  block.totalUncompressedDataSize = 6;
  block.totalCompressedDataSize = 7;
  block.filter_total_bytes_in = 8;
  block.filter_total_bytes_out = 9;
  block.compressionRatio = 100;
  block.filter_compression_ratio = 4000000002u;
  block.interfaceRow[0] = {5000000001, 2, 3, 4, 5, 6};
  block.interfaceRow[1] = {7, 8, 9, 10, 11, UINT64_MAX};
  for (int i = 0; i < SHM_QOS_ROWS; ++i) {
    auto n = static_cast<uint32_t>(i);
    shm->qos[i] = {i - 1, 5000000000u + n, n + 10, n + 20, n + 30, n + 40, 4000000000u + n, n + 50};
  }
  for (int i = 0; i < SHM_TASKS; ++i) shm->taskPids[i] = i * 100 - 100;
  for (uint32_t i = 0; i < 8; ++i) shm->sessionEngine.counter[i] = 5000000000u + i;
  shm->sessionEngine.sessions = -4;
}

void fillTables() {
  putRoute(5, "10.1.0.0", "255.255.0.0", "192.168.1.254", 3, 2);
  putRoute(2, "0.0.0.0", "0.0.0.0", "192.168.1.1", 2, SHM_NO_SLOT);
  shm->routes.head = 5;
  putRoute6(0, "2001:db8::", 32, "fe80::1", 1, 9);
  putRoute6(9, "::", 0, "2001:db8:1:2:3:4:5:6", 77, SHM_NO_SLOT);
  shm->routes6.head6 = 0;

  FilterRule& first = shm->filterTable.rule[0];
  first = {};
  first.ipVersion = 4;
  first.srcAddr = quad("10.1.0.0");
  first.srcMask = quad("255.255.0.0");
  first.dstAddr = quad("192.168.100.200");
  first.dstMask = quad("255.255.255.255");
  first.proto = 6;
  first.srcPort = 1024;
  first.srcPortEnd = 65535;
  first.destPort = 80;
  first.destPortEnd = 443;
  first.target = 1;
  first.priority = 3;
  first.bandwidth = 2147483647;
  first.accel = 1;
  first.ruleAction = 3;
  FilterRule& second = shm->filterTable.rule[1];
  second = first;
  second.ipVersion = 6;
  setIp6(second.srcAddr6, "2001:db8::");
  second.srcPrefixLen6 = 32;
  second.dstPrefixLen6 = 0;
  second.proto = 17;
  second.target = -1;
  second.accel = 2;
  second.ruleAction = 2;
  FilterRule& third = shm->filterTable.rule[2];
  third = {};
  third.ipVersion = 1;
  third.proto = 89;
  third.target = 0;
  third.priority = -12345;
  third.bandwidth = -5;
  third.ruleAction = 4;
  shm->filterTable.ruleCount = 3;

  shm->eventLog.record[0] = {1300094102, 21, 2, "admin"};
  shm->eventLog.writeIndex = 1;
}

constexpr char kFilledByHand[] =
    "Kestrove shared memory:\n"
    "\n"
    "SHM Operational state: Debug Mode\n"
    "-->   Files     ------\n"
    "Config file: \t\t\t/etc/config/kestrove.conf\n"
    "Event log file: \t\t/var/log/kestrove/event.log\n"
    "-->   Users    ------\n"
    "  userCount: \t\t\t2\n"
    "  adminUserCount: \t\t1\n"
    "  User Accounts:\n"
    "Username                         superUser  lastLogin  lastPasswdChange\n"
    "-------------------------------  ---------  ---------  ----------------\n"
    "admin                            1          14-Mar-2011 09:15:02  1300000000\n"
    "abcdefghijklmnopqrstuvwxyz012345  -7         31-Dec-1969 23:59:59  -2\n"
    "-->   Config    ------\n"
    "  kestroveVersion: \t\t4.1.10.5 (4.1.10)\n"
    "  drelmVersion: \t\t2.0.0.9 (2.0)\n"
    "  productId: \t\t\t5 (DRELM)\n"
    "  hardwarePlatform: \t\t14\n"
    "  unitId: \t\t\tunit 7\n"
    "  compression: \t\t\tOperational\n"
    "  failToWireAvailable: \t\tDisabled\n"
    "  failToWireStatus: \t\t0x0a\n"
    "  snmpOperState: \t\tUnconfigured\n"
    "  httpOperState: \t\tConfiguration Mode\n"
    "  httpEncryptedId: \t\tid\n"
    "  httpSessionTimeout: \t\t-30\n"
    "  cliOperState: \t\tDebug Mode\n"
    "  kestroveOperState: \t\tInvalid Mode\n"
    "  loggingOperState: \t\tOperational\n"
    "  sshdOperState: \t\tDisabled\n"
    "  bannerOperState: \t\tOperational\n"
    "  cifsOperState: \t\tDisabled\n"
    "  webCacheOperState: \t\tOperational\n"
    "  ddupOperState: \t\tLZ+DDUP\n"
    "  ddupStartupOptions: \t\t-x -y\n"
    "  singleInterfaceMode: \t\tDisabled\n"
    "  pbrOperState: \t\tOperational\n"
    "  ipv6Support: \t\t\tOperational\n"
    "  wanOptSupport: \t\tDisabled\n"
    "  minRate: \t\t\t256000\n"
    "  minMtu: \t\t\t128\n"
    "  idleTimeout: \t\t\t4000000000\n"
    "  transparentBridgeOperState: \tOperational\n"
    "  lanCongestionControl: \tPer-Connection\n"
    "  lanLinkRate: \t\t\t100000000\n"
    "  lanSendBufferSize: \t\t1\n"
    "  lanReceiveBufferSize: \t2\n"
    "  lanMaximumTransferUnit: \t1500\n"
    "  lanIpAddress: \t\t10.1.2.3\n"
    "  lanIpAddressMask: \t\t255.255.255.0\n"
    "  lanBroadcastAddress: \t\t10.1.2.255\n"
    "  lanVlanId: \t\t\t12\n"
    "  physicalLanInterfaceName: \teth1\n"
    "  lanInterfaceName: \t\t0123456789abcdef\n"
    "  lanHardwareAddress: \t\t00:06:B0:AB:CD:ef\n"
    "  lanLinkSetting: \t\t100baseTx-FD\n"
    "  wanCongestionControl: \tError Tolerance\n"
    "  wanLinkRate: \t\t\t2000000\n"
    "  wanSendBufferSize: \t\t3\n"
    "  wanReceiveBufferSize: \t4\n"
    "  wanMaximumTransferUnit: \t1400\n"
    "  wanIpDefaultRtt: \t\t250\n"
    "  wanIpAddress: \t\t192.168.1.2\n"
    "  wanIpAddressMask: \t\t255.255.0.0\n"
    "  wanBroadcastAddress: \t\t192.168.255.255\n"
    "  wanVlanId: \t\t\t13\n"
    "  physicalWanInterfaceName: \teth0\n"
    "  wanInterfaceName: \t\teth0.13\n"
    "  wanHardwareAddress: \t\t01:02:03:04:05:fe\n"
    "  wanLinkSetting: \t\tauto\n"
    "  gatewayId: \t\t\tFF0A0B0C\n"
    "  managementAddress: \t\t172.16.0.1\n"
    "  managementAddressMask: \t255.240.0.0\n"
    "  managementBroadcastAddress: \t172.31.255.255\n"
    "  managementHardwareAddress: \tAA:BB:CC:DD:EE:ff\n"
    "  sysName: \t\t\tname\n"
    "  sysLocation: \t\t\tlocation\n"
    "  sysContact: \t\t\tcontact\n"
    "  sysDescription: \t\tdescription\n"
    "  user logged in from: \t\t\tssh\n"
    "-->   Operational Stats\n"
    "-->   Notifications --\n"
    "  counterLastResetTime: \t\t4000000001\n"
    "  accumulationInterval: \t\t10\n"
    "  accumulatedIntervals: \t\t18446744073709551615\n"
    "  maxTcpSessionInitiationsPerSecond: \t-1\n"
    "  maxTcpSessionTerminationsPerSecond: \t2\n"
    "  totalTcpSessionRequestsFailed: \t5000000003\n"
    "  totalTcpSessionsTimedOut: \t\t4\n"
    "  totalTcpSegmentsBadChecksum: \t\t5\n"
    "  totalUncompressedDataSize: \t\t6\n"
    "  totalCompressedDataSize: \t\t7\n"
    "  filter_total_bytes_in: \t\t8\n"
    "  filter_total_bytes_out: \t\t9\n"
    "  compressionRatio: \t\t\t100\n"
    "  filter_compression_ratio: \t\t4000000002\n"
    "-->   Interface Stats ------\n"
    " i/f           bytes: tx                 rx   packet: tx           rx  drops: tx         rx\n"
    " Lan:         5000000001                  2            3            4          5          6 \n"
    " Wan:                  7                  8            9           10         11         -1 \n"
    "-->   Qos Stats    ---\n"
    "                bytes         packets         packets    current    average    maximum      \n"
    " prio            sent            sent         dropped       rate       rate       rate  sess\n"
    "LAN: \n"
    "    8      5000000009              19              29         39         49 4000000009    59\n"
    "WAN: \n"
    "    0      5000000001              11              21         31         41 4000000001    51\n"
    "    1      5000000002              12              22         32         42 4000000002    52\n"
    "    2      5000000003              13              23         33         43 4000000003    53\n"
    "    3      5000000004              14              24         34         44 4000000004    54\n"
    "    4      5000000005              15              25         35         45 4000000005    55\n"
    "    5      5000000006              16              26         36         46 4000000006    56\n"
    "    6      5000000007              17              27         37         47 4000000007    57\n"
    "    7      5000000008              18              28         38         48 4000000008    58\n"
    "Total WAN:\n"
    "   -1      5000000000              10              20         30         40 4000000000    50\n"
    "-->   Proc Stats   ---\n"
    "   snmpd:\t[-100]\n"
    "   httpd:\t[0]\n"
    "   statsd:\t[100]\n"
    "   sshd:\t[200]\n"
    "   kestrove:\t[300]\n"
    "   miscMonitor:\t[400]\n"
    "   monitor:\t[500]\n"
    "-->   Domo Stats   ---\n"
    "Num Sessions: -4\n"
    " i/f           bytes: tx                 rx         packet: tx                 rx\n"
    " Lan:         5000000000         5000000001         5000000002         5000000003\n"
    " Wan:         5000000004         5000000005         5000000006         5000000007\n"
    "-->   IPv4 Route Table  ---\n"
    "Dest Addr          Dest Mask          Next Hop           Row Status\n"
    "10.1.0.0           255.255.0.0        192.168.1.254      Active\n"
    "0.0.0.0            0.0.0.0            192.168.1.1        NIS\n"
    "-->   IPv6 Route Table  ---\n"
    "Destination Address/Prefix                 \n"
    "   Next Hop                                Row Status\n"
    "2001:db8::/32 \n"
    "   fe80::1                                 Invalid\n"
    "::/0 \n"
    "   2001:db8:1:2:3:4:5:6                    * No Such Value *\n"
    "-->   Filter Table ---\n"
    "  ruleCount: \t\t3\n"
    "order srcAddr         dstAddr         proto srcPor destPo prio target accel    bandwidth   ruleAction\n"
    "ipVer srcMask         dstMask               to     to                                                \n"
    "1     10.1.0.0        192.168.100.200 TCP   1024   80     3    1      Opera   2147483647       Active\n"
    "4     255.255.0.0     255.255.255.255       65535  443                                               \n"
    "\n"
    "2                                     UDP   1024   80     3    BRIDGE Disab   2147483647          NIS\n"
    "6                                           65535  443                                               \n"
    "      srcAddr6: 2001:db8::/32\n"
    "      dstAddr6: ::/0\n"
    "\n"
    "3     0.0.0.0         0.0.0.0         89    0      0      -123 DROP   Unini           -5 * No Such Va\n"
    "Any   0.0.0.0         0.0.0.0               0      0                                                 \n"
    "-->   Event log ------\n"
    "  eventLogFull: \t\t0\n"
    "  readIndex: \t\t\t0\n"
    "  writeIndex: \t\t\t1\n"
    "- List of events:\n"
    "Timestamp             Description  Source    Type\n"
    "---------             -----------  ------    ----\n"
    "14-Mar-2011 09:15:02  Information  HTTP      admin       Web interface login\n"
    "-----------------\n"
    "\n";

class DumpGolden : public StoreTest {};

TEST_F(DumpGolden, OfAStoreFilledByHand) {
  fillHead();
  fillVersions();
  fillSwitches();
  fillLan();
  fillWan();
  fillTail();
  fillCounters();
  fillTables();
  EXPECT_EQ(kFilledByHand, dump());
}

}  // namespace
}  // namespace kestrove::testing
