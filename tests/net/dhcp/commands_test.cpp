// SPDX-License-Identifier: Apache-2.0
// The client's command, its outcome, and the lease file, with a recorded client.

#include <stdio.h>
#include <sys/stat.h>
#include <time.h>

#include "tests/net/dhcp/dhcp_fixture.h"
#include "tests/support/deny.h"
#include "tests/support/lock_watch.h"
#include "tests/support/peer.h"

namespace kestrove::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;

// How long the recorded client takes, in seconds.
void clientTakes(const char* seconds) { writeFile("/run/kestrove/answers/dhcpcd.sleep", seconds); }

class DhcpCommandsTest : public DhcpTest {
 protected:
  void SetUp() override {
    DhcpTest::SetUp();
    answer("dhcpcd", "", 0);
    clientTakes("0");
    for (const char* name : {"eth1", "eth0.12"}) {
      unlink(pidFile(name).c_str());
      std::filesystem::remove_all(leaseFile(name));
    }
  }

  std::vector<Setting> settingsOf(const std::string& lease) {
    heard().clear();
    writeFile(leaseFile("eth1"), lease);
    EXPECT_EQ(0, start("eth1", 5));
    return heard();
  }
};

TEST_F(DhcpCommandsTest, ClientLineToTheBlank) {
  start("eth0.12", 30);
  EXPECT_THAT(shellLines(), ElementsAre("/sbin/dhcpcd -t 30 -L  eth0.12"));
  EXPECT_THAT(programs(), ElementsAre("/sbin/dhcpcd -t 30 -L eth0.12"));
  clearRecords();
  start("eth1", -5);
  EXPECT_THAT(shellLines(), ElementsAre("/sbin/dhcpcd -t -5 -L  eth1"));
}

TEST_F(DhcpCommandsTest, LeaseGivesOneCallForEachLine) {
  EXPECT_THAT(settingsOf("IPADDR='10.0.0.5'\nNETMASK='255.255.255.0'\n"),
              ElementsAre(Pair(0, "10.0.0.5"), Pair(1, "255.255.255.0")));
}

TEST_F(DhcpCommandsTest, KindsOfLines) {
  EXPECT_THAT(settingsOf("IPADDR='a'\nNETMASK='b'\nGATEWAYS='c'\nDHCPSID='d'\nDNSSERVERS='1.1.1.1 8.8.8.8'\n"
                         "DNSDOMAIN='e'\nBROADCAST='f'\nNETMASK IPADDR='g'\nDHCPSID='DNSSERVERS'\n"
                         "DNSSERVERS DNSDOMAIN='h'\n"),
              ElementsAre(Pair(0, "a"), Pair(1, "b"), Pair(2, "c"), Pair(3, "d"), Pair(4, "1.1.1.1 8.8.8.8"),
                          Pair(5, "e"), Pair(6, "f"), Pair(0, "g"), Pair(4, "DNSSERVERS"), Pair(5, "h")));
  EXPECT_EQ(5u, wordOut);
}

TEST_F(DhcpCommandsTest, ValuesAndQuotes) {
  EXPECT_THAT(settingsOf("IPADDR\nIPADDR='x'\nNETMASK=none\n\nIPADDR=''\nIPADDR='open\nIPADDR='a'b'c'\nIPADDR='last"),
              ElementsAre(Pair(0, ""), Pair(0, "x"), Pair(1, "x"), Pair(6, "x"), Pair(0, ""), Pair(0, "open"),
                          Pair(0, "a"), Pair(0, "last")));
}

TEST_F(DhcpCommandsTest, LongLinesComeInPieces) {
  std::string value(300, 'v');
  EXPECT_THAT(settingsOf("IPADDR='" + value + "'\n"),
              ElementsAre(Pair(0, std::string(111, 'v')), Pair(6, std::string(111, 'v')), Pair(6, "")));
  EXPECT_THAT(settingsOf(std::string(119, 'x') + "\nIPADDR='y'\n"),
              ElementsAre(Pair(6, ""), Pair(6, ""), Pair(0, "y")));
}

TEST_F(DhcpCommandsTest, RubbishLease) {
  EXPECT_THAT(settingsOf(""), IsEmpty());
  EXPECT_EQ(1024u * 1024u / 119 + 1, settingsOf(std::string(1024 * 1024, 'r')).size());
  std::string bytes;
  for (int i = 0; i < 4096; ++i) bytes += static_cast<char>(i * 7);
  settingsOf(bytes);
  EXPECT_THAT(settingsOf(std::string("IP\0ADDR='x'\n", 12)), ElementsAre(Pair(6, "")));
}

TEST_F(DhcpCommandsTest, NoCallbackStillWritesTheKinds) {
  writeFile(leaseFile("eth1"), "IPADDR='x'\nDNSDOMAIN='y'\n");
  uint32_t kind = 77;
  EXPECT_EQ(0, dhcp_start("eth1", 5, nullptr, &kind));
  EXPECT_EQ(5u, kind);
}

TEST_F(DhcpCommandsTest, LeaseThatCannotBeOpenedIsLoggedAndNoFailure) {
  EXPECT_EQ(0, start("eth1", 5));
  EXPECT_THAT(heard(), IsEmpty());
  EXPECT_EQ(77u, wordOut);
  EXPECT_THAT(syslogLines(), ElementsAre(HasSubstr("err: DHCP file err /var/lib/dhcpcd/dhcpcd-eth1.info")));
}

TEST_F(DhcpCommandsTest, FolderInPlaceOfALease) {
  std::filesystem::create_directory(leaseFile("eth1"));
  EXPECT_EQ(0, start("eth1", 5));
  EXPECT_THAT(heard(), IsEmpty());
}

TEST_F(DhcpCommandsTest, ClientThatFails) {
  writeFile(leaseFile("eth1"), "IPADDR='x'\n");
  for (int status : {1, 127, 255}) {
    answer("dhcpcd", "", status);
    clearSyslog();
    EXPECT_EQ(-1, start("eth1", 5));
    EXPECT_THAT(syslogLines(), ElementsAre(HasSubstr("err: DHCP err:  address NOT assigned")));
  }
  EXPECT_THAT(heard(), IsEmpty());
}

TEST_F(DhcpCommandsTest, LeaseAtTheDeadlineIsNone) {
  writeFile(leaseFile("eth1"), "IPADDR='x'\n");
  clientTakes("1");
  EXPECT_EQ(-1, start("eth1", 1));
  EXPECT_THAT(heard(), IsEmpty());
  EXPECT_THAT(syslogLines(), ElementsAre(HasSubstr("err: DHCP err:  address NOT assigned")));
  EXPECT_EQ(0, start("eth1", 60));
  EXPECT_THAT(heard(), ElementsAre(Pair(0, "x")));
}

TEST_F(DhcpCommandsTest, NoTimeAtAll) {
  for (int timeout : {0, -1, INT32_MIN}) EXPECT_EQ(-1, start("eth1", timeout));
}

TEST_F(DhcpCommandsTest, SecondsArePrinted) {
  clientTakes("1");
  writeFile(leaseFile("eth1"), "");
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(0, start("eth1", 60));
  EXPECT_EQ("time_sec= 1;  timeout=60 \n ", ::testing::internal::GetCapturedStdout());
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(-1, start("eth1", 1));
  EXPECT_EQ("time_sec= 1;  timeout=1 \n ", ::testing::internal::GetCapturedStdout());
  answer("dhcpcd", "", 1);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(-1, start("eth1", 60));
  EXPECT_EQ("", ::testing::internal::GetCapturedStdout());
}

TEST_F(DhcpCommandsTest, StaleClientIsStoppedFirst) {
  writeFile(pidFile("eth1"), "999999\nmore\n");
  start("eth1", 5);
  EXPECT_THAT(shellLines(), ElementsAre("kill 999999", "/sbin/dhcpcd -t 5 -L  eth1"));
  for (const char* text : {"999998", "\n"}) {
    clearRecords();
    writeFile(pidFile("eth1"), text);
    start("eth1", 5);
    EXPECT_EQ(text[0] == '\n' ? "kill " : "kill 999998", shellLines().at(0));
  }
}

TEST_F(DhcpCommandsTest, BlanksBehindTheNumberAreDropped) {
  for (const char* text : {"999999 \n", "999999 \t  \nmore\n", "999999  "}) {
    clearRecords();
    writeFile(pidFile("eth1"), text);
    start("eth1", 5);
    EXPECT_EQ("kill 999999", shellLines().at(0)) << text;
  }
}

TEST_F(DhcpCommandsTest, PidFileWithNothingToReadOrRubbishStopsNobody) {
  for (const std::string& text : {std::string(), std::string("1;reboot\n"), std::string("-1\n"), std::string("$(id)"),
                                  std::string("12 34\n"), std::string(" 12\n"), std::string(300, 'x')}) {
    clearRecords();
    writeFile(pidFile("eth1"), text);
    start("eth1", 5);
    EXPECT_THAT(shellLines(), ElementsAre("/sbin/dhcpcd -t 5 -L  eth1")) << text;
  }
}

TEST_F(DhcpCommandsTest, NumbersThatAreNoProcessStopNobody) {
  for (const char* text : {"0\n", "1\n", "00\n", "0001 \n", "2147483648\n", "4294967295\n", "4294967297\n",
                           "18446744073709551615\n", "18446744073709551618\n"}) {
    clearRecords();
    writeFile(pidFile("eth1"), text);
    start("eth1", 5);
    EXPECT_THAT(shellLines(), ElementsAre("/sbin/dhcpcd -t 5 -L  eth1")) << text;
  }
}

TEST_F(DhcpCommandsTest, ClientRunsAsTheCaller) {
  clearSyslog();
  EXPECT_EQ(0, inOtherProcess([] {
              denySystemCall(kSetUid);
              uint32_t kind = 0;
              return dhcp_start("eth1", 5, nullptr, &kind);
            }));
  EXPECT_THAT(shellLines(), ElementsAre("/sbin/dhcpcd -t 5 -L  eth1"));
  EXPECT_THAT(syslogLines(), Not(Contains(HasSubstr("UID"))));
}

TEST_F(DhcpCommandsTest, ClientRunsWithoutTheStoreLock) {
  makeStore();
  LockWatch watch;
  watch.instead("/sbin/dhcpcd");
  ASSERT_EQ(0, shm_lock());
  EXPECT_EQ(0, start("eth1", 5));
  EXPECT_EQ(1, shm_lock_count);
  shm_unlock();
  ASSERT_EQ(0, kestrove_hold());
  EXPECT_EQ(0, start("eth1", 5));
  EXPECT_TRUE(fileLockHeld()) << "the operation around it goes on";
  ASSERT_EQ(0, kestrove_release());
  EXPECT_THAT(watch.seen(), ElementsAre("dhcpcd free", "dhcpcd free"));
  dropStore();
  shm_errno = 99;
}

TEST_F(DhcpCommandsTest, EmptyNameRunsAsItIs) {
  EXPECT_EQ(0, start("", 5));
  EXPECT_THAT(shellLines(), ElementsAre("/sbin/dhcpcd -t 5 -L  "));
}

TEST_F(DhcpCommandsTest, FileNamesTakeFortyNineCharactersOfALongName) {
  std::string name(60, 'n'), cut(49, 'n');
  writeFile(pidFile(cut), "999999\n");
  writeFile(leaseFile(cut), "IPADDR='x'\n");
  EXPECT_EQ(0, start(name, 5));
  EXPECT_THAT(shellLines(), ElementsAre("kill 999999", "/sbin/dhcpcd -t 5 -L  " + name));
  EXPECT_THAT(heard(), ElementsAre(Pair(0, "x")));
}

TEST_F(DhcpCommandsTest, HostileNamesAreRefusedBeforeAnythingRuns) {
  writeFile("/var/run/dhcpcd-..pid", "999999\n");
  for (const std::string& name :
       {std::string("eth1;reboot"), std::string("$(reboot)"), std::string("a b"), std::string("../x"),
        std::string("a\nb"), std::string("-r"), std::string("'"), std::string(2000, 'n')}) {
    clearSyslog();
    EXPECT_EQ(-1, start(name, 5)) << name;
    EXPECT_THAT(syslogLines(), Contains(HasSubstr("err: DHCP err:  address NOT assigned")));
  }
  EXPECT_THAT(shellLines(), IsEmpty());
}

TEST_F(DhcpCommandsTest, NoNameAndNoPlaceForTheKind) {
  uint32_t kind = 77;
  EXPECT_FAILS_WITH(SHM_EINVAL, dhcp_start(nullptr, 5, nullptr, &kind));
  EXPECT_FAILS_WITH(SHM_EINVAL, dhcp_start("eth1", 5, nullptr, nullptr));
  EXPECT_THAT(shellLines(), IsEmpty());
  shm_errno = 99;
}

// What a caller does with a lease: it stores the values, here over the name itself.
int storeOverName(uint32_t*, const char* value) {
  strcpy(shm->config.wanInterfaceName, value);
  return 0;
}

TEST_F(DhcpCommandsTest, NameAndKindMayLieInTheStore) {
  makeStore();
  strcpy(shm->config.wanInterfaceName, "eth1");
  writeFile(leaseFile("eth1"), "IPADDR='10.0.0.5'\nDNSDOMAIN='example'\n");
  EXPECT_EQ(0, dhcp_start(shm->config.wanInterfaceName, 5, storeOverName, &shm->config.wanIpAddress));
  EXPECT_STREQ("example", shm->config.wanInterfaceName);
  EXPECT_EQ(5u, shm->config.wanIpAddress);
  dropStore();
  shm_errno = 99;
}

TEST_F(DhcpCommandsTest, KindMayLieOverTheName) {
  makeStore();
  strcpy(shm->config.wanInterfaceName, "eth1");
  writeFile(leaseFile("eth1"), "IPADDR='10.0.0.5'\nDNSDOMAIN='example'\n");
  void* place = shm->config.wanInterfaceName;
  EXPECT_EQ(0, dhcp_start(shm->config.wanInterfaceName, 5, nullptr, static_cast<uint32_t*>(place)));
  EXPECT_EQ(5u, *static_cast<uint32_t*>(place));
  EXPECT_THAT(shellLines(), ElementsAre("/sbin/dhcpcd -t 5 -L  eth1"));
  dropStore();
  shm_errno = 99;
}

}  // namespace
}  // namespace kestrove::testing
