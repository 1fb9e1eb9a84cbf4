#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

using namespace kestrove::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

constexpr char kHeading[] = "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n";
constexpr char kNetFolder[] = "/proc/self/net";
constexpr char kRouteFile[] = "/proc/self/net/route";

struct Gateway {
  int result;
  std::string text;
};
bool operator==(const Gateway& a, const Gateway& b) { return a.result == b.result && a.text == b.text; }
void PrintTo(const Gateway& gateway, std::ostream* out) { *out << gateway.result << " \"" << gateway.text << '"'; }

Gateway defaultGateway() {
  char text[128] = "kept";
  int result = GetDefaultGW(text);
  return {result, text};
}

// A routing table of our own in place of the kernel's.
class RoutingTable : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(0, mount("none", kNetFolder, "tmpfs", 0, nullptr)); }
  void TearDown() override { umount2(kNetFolder, MNT_DETACH); }
  Gateway with(const std::string& lines) {
    writeFile(kRouteFile, lines);
    return defaultGateway();
  }
};

const Gateway kNone = {0, "kept"};

TEST_F(RoutingTable, DefaultRouteGivesTheKernelsText) {
  EXPECT_EQ((Gateway{1, "0101A8C0"}),
            with(std::string(kHeading) + "eth0\t0001A8C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\n" +
                 "eth0\t00000000\t0101A8C0\t0003\t0\t0\t0\t00000000\t0\t0\t0\n"));
}

TEST_F(RoutingTable, FirstDefaultRouteWins) {
  EXPECT_EQ((Gateway{1, "0101A8C0"}), with("eth0 00000000 0101A8C0\neth1 00000000 0201A8C0\n"));
}

TEST_F(RoutingTable, NumbersAreReadAsDecimal) {
  EXPECT_EQ((Gateway{1, "0101A8C0"}), with("eth0 0A000000 0101A8C0\n"));
  EXPECT_EQ((Gateway{1, "0101A8C0"}), with("eth0 C0A80000 0101A8C0\n"));  // no decimal digits at all
  EXPECT_EQ(kNone, with("eth0 10000000 0101A8C0\n"));
  EXPECT_EQ(kNone, with("eth0 00000000 00A8C001\n"));
  EXPECT_EQ(kNone, with("eth0 00000000 FE01A8C0\n"));
}

TEST_F(RoutingTable, IncompleteLinesAreSkipped) {
  EXPECT_EQ(kNone, with(""));
  EXPECT_EQ(kNone, with(kHeading));
  EXPECT_EQ(kNone, with("\n \t\r\neth0\neth0 00000000\neth0 00000000 00000000\neth0 0000000g 0101A8C0\n"));
  EXPECT_EQ((Gateway{1, "0101a8c0"}), with("\neth0\neth0 00000000 0101a8c0"));
}

TEST_F(RoutingTable, LinesAreReadInPiecesOf127Characters) {
  std::string front = "eth0 00000000 00000000";
  std::string filled = front + std::string(127 - front.size(), ' ');
  EXPECT_EQ((Gateway{1, "0101A8C0"}), with(filled + "eth1 00000000 0101A8C0\n"));
}

TEST_F(RoutingTable, MissingFileIsNoRoute) { EXPECT_EQ(kNone, defaultGateway()); }

TEST_F(RoutingTable, NullIsRefused) { EXPECT_FAILS_WITH(SHM_EINVAL, GetDefaultGW(nullptr)); }

TEST(Neighbours, AnswerGivesTheTextBetweenTheBrackets) {
  answer("arping",
         "ARPING 10.0.0.1 from 10.0.0.2 eth0\nUnicast reply from 10.0.0.1 [00:11:22:33:44:55]  0.8ms\n"
         "Unicast reply from 10.0.0.1 [66:77:88:99:AA:BB]  0.8ms\n");
  char mac[18] = "";
  EXPECT_EQ(0, neighb_mac(3, "eth0", "10.0.0.1", mac));
  EXPECT_STREQ("00:11:22:33:44:55", mac);
  EXPECT_THAT(shellLines(), ElementsAre("/usr/bin/arping 10.0.0.1 -I eth0 -c 3"));
  EXPECT_THAT(syslogLines(), IsEmpty());
}

TEST(Neighbours, AnswerWithoutBracketsIsNone) {
  answer("arping", "Unicast reply from 10.0.0.1\nUnicast reply ]x[\nUnicast reply [22]\n");
  char mac[18] = "";
  EXPECT_EQ(0, neighb_mac(1, "eth0", "10.0.0.1", mac));
  EXPECT_STREQ("22", mac);
}

TEST(Neighbours, LongAnswerIsCutToAHardwareAddress) {
  answer("arping", "Unicast reply [00:11:22:33:44:55:66:77:88]\n");
  char mac[18] = "";
  EXPECT_EQ(0, neighb_mac(1, "eth0", "10.0.0.1", mac));
  EXPECT_STREQ("00:11:22:33:44:55", mac);
}

TEST(Neighbours, SilenceIsLoggedWithTheLastLine) {
  answer("arping", "ARPING 10.0.0.1\nReceived 0 response(s)\n", 1);
  char mac[18] = "kept";
  shm_errno = 99;
  EXPECT_EQ(-1, neighb_mac(1, "eth0", "10.0.0.1", mac));
  EXPECT_STREQ("kept", mac);
  EXPECT_EQ(99u, shm_errno);
  EXPECT_THAT(syslogLines(), ElementsAre("err: fail to retrieve Received 0 response(s)\n\n"));
}

TEST(Neighbours, NoOutputIsLoggedWithTheCommand) {
  char mac[18];
  EXPECT_EQ(-1, neighb_mac(-2, "eth0", "10.0.0.1", mac));
  EXPECT_THAT(syslogLines(), ElementsAre("err: fail to retrieve /usr/bin/arping 10.0.0.1 -I eth0 -c -2\n"));
}

TEST(Neighbours, WhatIsNotPlainNeverReachesTheShell) {
  char mac[18];
  EXPECT_EQ(-1, neighb_mac(1, "eth0;reboot", "10.0.0.1", mac));
  EXPECT_EQ(-1, neighb_mac(1, "eth0", "$(reboot)", mac));
  EXPECT_THAT(shellLines(), IsEmpty());
  EXPECT_EQ(2u, syslogLines().size());
}

TEST(Neighbours, NullIsRefused) {
  char mac[18];
  EXPECT_FAILS_WITH(SHM_EINVAL, neighb_mac(1, nullptr, "10.0.0.1", mac));
  EXPECT_FAILS_WITH(SHM_EINVAL, neighb_mac(1, "eth0", nullptr, mac));
  EXPECT_FAILS_WITH(SHM_EINVAL, neighb_mac(1, "eth0", "10.0.0.1", nullptr));
}

constexpr char kResolverFile[] = "/etc/resolv.conf";

class NameServer : public StoreTest {};

TEST_F(NameServer, IsTheOnlyLineOfTheFile) {
  writeFile(kResolverFile, "search here\nnameserver 1.1.1.1\n");
  EXPECT_EQ(0, changeDnsServerIp(quad("10.20.30.40")));
  EXPECT_EQ("nameserver 10.20.30.40", readFile(kResolverFile));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(NameServer, ChangeDrivesTheOperatingModes) {
  shm->config.opModeState = 0;
  save_shared_memory();
  unlink(shm->config.configFileName);
  EXPECT_EQ(0, changeDnsServerIp(1));
  EXPECT_TRUE(fileExists(shm->config.configFileName)) << "the state machine saves what it went through";
}

TEST_F(NameServer, ResultOfTheOperatingModesDoesNotMatter) {
  shm->config.opModeState = 77;
  EXPECT_EQ(0, changeDnsServerIp(quad("1.2.3.4")));
}

TEST_F(NameServer, FileThatCannotBeOpenedIsAFailure) {
  unlink(kResolverFile);
  ASSERT_EQ(0, mkdir(kResolverFile, 0755));
  shm_errno = 99;
  EXPECT_EQ(-1, changeDnsServerIp(1));
  EXPECT_EQ(99u, shm_errno);
  EXPECT_FALSE(fileExists(shm->config.configFileName)) << "no event";
}

TEST_F(NameServer, FileThatCannotBeWrittenIsAFailure) {
  unlink(kResolverFile);
  ASSERT_EQ(0, symlink("/dev/full", kResolverFile));
  EXPECT_EQ(-1, changeDnsServerIp(1));
  EXPECT_FALSE(fileExists(shm->config.configFileName)) << "no event";
}

TEST_F(NameServer, CanBeRemoved) {
  writeFile(kResolverFile, "nameserver 1.1.1.1\n");
  EXPECT_EQ(0, removeResolvConf());
  EXPECT_FALSE(fileExists(kResolverFile));
  EXPECT_EQ(-1, removeResolvConf());
  ASSERT_EQ(0, mkdir(kResolverFile, 0755));
  EXPECT_EQ(-1, removeResolvConf()) << "a folder is no file";
  rmdir(kResolverFile);
}

TEST(NameServerWithoutAStore, NothingIsWritten) {
  writeFile(kResolverFile, "nameserver 1.1.1.1\n");
  EXPECT_FAILS_WITH(SHM_EATTACH, changeDnsServerIp(1));
  EXPECT_EQ("nameserver 1.1.1.1\n", readFile(kResolverFile));
}

}  // namespace
