// SPDX-License-Identifier: Apache-2.0
// Every command line and every vector of the kernel rules, whole and in order.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/net/policy/policy_fixture.h"
#include "tests/support/peer.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr char kRestoreFile[] = "/tmp/restore_file";
const std::string kClosingLines =
    "COMMIT\n"
    "*filter\n"
    ":INPUT ACCEPT [0:0]\n"
    ":FORWARD ACCEPT [0:0]\n"
    ":OUTPUT ACCEPT [0:0]\n"
    "COMMIT\n";
const std::string kTwelveLines =
    "*mangle\n"
    ":PREROUTING ACCEPT [0:0]\n"
    ":INPUT ACCEPT [0:0]\n"
    ":FORWARD ACCEPT [0:0]\n"
    ":OUTPUT ACCEPT [0:0]\n"
    ":POSTROUTING ACCEPT [0:0]\n" +
    kClosingLines;

class PacketFilter : public ::testing::Test {};

TEST_F(PacketFilter, AnUpdateFlushesAndLoadsTheTwelveLines) {
  EXPECT_EQ(0, updateKernelRules());
  EXPECT_THAT(programs(), ElementsAre("/sbin/iptables -F", "/sbin/iptables -t mangle -F", "/sbin/ip6tables -F",
                                      "/sbin/iptables -X", "/sbin/iptables -t mangle -X", "/sbin/iptables-restore"));
  EXPECT_THAT(inputsOf("iptables-restore"), ElementsAre(kTwelveLines));
  EXPECT_FALSE(fileExists(kRestoreFile));
  EXPECT_EQ(nullptr, fp);
  EXPECT_THAT(shellLines(), IsEmpty()) << "no shell between";
}

TEST_F(PacketFilter, AnUpdateNeedsNoStore) {
  ASSERT_EQ(nullptr, shm);
  EXPECT_EQ(0, updateKernelRules());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(PacketFilter, AnOldFileIsReplaced) {
  writeFile(kRestoreFile, "rubbish that is longer than nothing\n");
  EXPECT_EQ(0, updateKernelRules());
  EXPECT_THAT(inputsOf("iptables-restore"), ElementsAre(kTwelveLines));
}

TEST_F(PacketFilter, ALinkLeftInItsPlaceIsNotFollowed) {
  writeFile("/tmp/victim", "precious");
  ASSERT_EQ(0, symlink("/tmp/victim", kRestoreFile));
  EXPECT_EQ(0, updateKernelRules());
  EXPECT_EQ("precious", readFile("/tmp/victim"));
}

TEST_F(PacketFilter, AFileThatCannotBeRemovedIsNotOverwritten) {
  writeFile("/tmp/victim", "precious");
  ASSERT_EQ(0, chmod("/tmp/victim", 0600));
  writeFile(kRestoreFile, "");
  ASSERT_EQ(0, mount("/tmp/victim", kRestoreFile, nullptr, MS_BIND, nullptr));
  EXPECT_EQ(-1, updateKernelRules());
  EXPECT_EQ("precious", readFile("/tmp/victim"));
  struct stat status = {};
  ASSERT_EQ(0, stat("/tmp/victim", &status));
  EXPECT_EQ(mode_t{0600}, status.st_mode & 07777);
  EXPECT_THAT(programs(), IsEmpty());
  ASSERT_EQ(0, umount(kRestoreFile));
}

TEST_F(PacketFilter, ProgramsDoNotReadTheCallersInput) {
  writeFile("/tmp/typed", "typed by the caller\n");
  EXPECT_EQ(0, inOtherProcess([] {
              dup2(open("/tmp/typed", O_RDONLY), STDIN_FILENO);
              return updateKernelRules() + addIp6tablesDropRule();
            }));
  EXPECT_EQ(7u, programs().size());
  EXPECT_THAT(inputsOf("iptables"), IsEmpty());
  EXPECT_THAT(inputsOf("ip6tables"), IsEmpty());
  EXPECT_THAT(inputsOf("iptables-restore"), ElementsAre(kTwelveLines));
}

TEST_F(PacketFilter, WithoutTheFileNothingRuns) {
  ASSERT_EQ(0, mkdir(kRestoreFile, 0755));
  EXPECT_EQ(-1, updateKernelRules());
  EXPECT_THAT(programs(), IsEmpty());
  EXPECT_EQ(nullptr, fp);
  EXPECT_THAT(syslogLines(), ElementsAre("err: Error opening iptables temp file: File exists"));
}

TEST_F(PacketFilter, AFolderThatCannotBeWrittenStopsTheUpdate) {
  ASSERT_EQ(0, mount("none", "/tmp", "tmpfs", MS_RDONLY, nullptr));
  EXPECT_EQ(-1, updateKernelRules());
  EXPECT_THAT(programs(), IsEmpty());
  EXPECT_THAT(syslogLines(), ElementsAre("err: Error opening iptables temp file: Read-only file system"));
}

TEST_F(PacketFilter, ResultsOfTheProgramsDoNotMatter) {
  answer("iptables", "noise", 3);
  answer("ip6tables", "noise", 4);
  answer("iptables-restore", "noise", 5);
  EXPECT_EQ(0, updateKernelRules());
  EXPECT_EQ(6u, programs().size());
  EXPECT_EQ(3, deleteExistingChains());
  EXPECT_EQ(4, flushExistingChains()) << "the result of the last";
}

TEST_F(PacketFilter, FlushingRunsThreeVectors) {
  EXPECT_EQ(0, flushExistingChains());
  EXPECT_THAT(programs(), ElementsAre("/sbin/iptables -F", "/sbin/iptables -t mangle -F", "/sbin/ip6tables -F"));
}

TEST_F(PacketFilter, DeletingChainsRunsTwoVectors) {
  EXPECT_EQ(0, deleteExistingChains());
  EXPECT_THAT(programs(), ElementsAre("/sbin/iptables -X", "/sbin/iptables -t mangle -X"));
}

TEST_F(PacketFilter, DroppingForwardedIpv6IsOneVector) {
  EXPECT_EQ(0, addIp6tablesDropRule());
  EXPECT_THAT(programs(), ElementsAre("/sbin/ip6tables -A FORWARD -j DROP"));
  answer("ip6tables", "", 2);
  EXPECT_EQ(2, addIp6tablesDropRule());
}

TEST_F(PacketFilter, ProgramsSayNothingOnOurStreams) {
  answer("ip6tables", "noise", 0);
  ::testing::internal::CaptureStdout();
  addIp6tablesDropRule();
  EXPECT_EQ("", ::testing::internal::GetCapturedStdout());
}

TEST_F(PacketFilter, ALineIsAddedToTheOpenFile) {
  fp = fopen(kRestoreFile, "w");
  EXPECT_EQ(4, addToRestoreFile("abc"));
  EXPECT_EQ(1, addToRestoreFile(""));
  EXPECT_EQ(9, addToRestoreFile("%s %n %d")) << "no format";
  EXPECT_EQ(0, commitHandler());
  EXPECT_THAT(inputsOf("iptables-restore"), ElementsAre("abc\n\n%s %n %d\n" + kClosingLines));
  EXPECT_EQ(nullptr, fp);
}

TEST_F(PacketFilter, ALineGoesToWhateverStreamIsThere) {
  char* text = nullptr;
  size_t size = 0;
  fp = open_memstream(&text, &size);
  EXPECT_EQ(3, addToRestoreFile("-A"));
  fclose(fp);
  fp = nullptr;
  EXPECT_STREQ("-A\n", text);
  free(text);
}

TEST_F(PacketFilter, WithoutAStreamThereIsNothingToAddOrCommit) {
  fp = nullptr;
  writeFile(kRestoreFile, "kept");
  EXPECT_EQ(-1, addToRestoreFile("abc"));
  EXPECT_EQ(-1, commitHandler());
  EXPECT_THAT(programs(), IsEmpty());
  EXPECT_EQ("kept", readFile(kRestoreFile));
  EXPECT_FAILS_WITH(SHM_EINVAL, addToRestoreFile(nullptr));
}

TEST_F(PacketFilter, TheFileIsForEverybodyWhileItIsLoaded) {
  // The restore program is a recorder, so a hard link made before shows the mode that the file was given.
  mode_t before = umask(077);
  fp = fopen(kRestoreFile, "w");
  umask(before);
  ASSERT_EQ(0, link(kRestoreFile, "/tmp/second_name"));
  EXPECT_EQ(0, commitHandler());
  struct stat status = {};
  ASSERT_EQ(0, stat("/tmp/second_name", &status));
  EXPECT_EQ(mode_t{0666}, status.st_mode & 07777);
}

TEST_F(PacketFilter, TheModeIsThatOfTheOpenFileWhateverItsNameLeadsTo) {
  writeFile("/tmp/victim", "precious");
  ASSERT_EQ(0, chmod("/tmp/victim", 0600));
  fp = fopen(kRestoreFile, "w");
  ASSERT_EQ(0, unlink(kRestoreFile));
  ASSERT_EQ(0, symlink("/tmp/victim", kRestoreFile));
  EXPECT_EQ(0, commitHandler());
  struct stat status = {};
  ASSERT_EQ(0, stat("/tmp/victim", &status));
  EXPECT_EQ(mode_t{0600}, status.st_mode & 07777);
}

TEST_F(PacketFilter, AModeThatCannotBeGivenIsLoggedAndTheLoadGoesOn) {
  char* text = nullptr;
  size_t size = 0;
  fp = open_memstream(&text, &size);  // a stream without a file
  EXPECT_EQ(0, commitHandler()) << "opening it as input has made it again";
  free(text);
  EXPECT_THAT(syslogLines(), ElementsAre("err: Error changing mode on restore file: Bad file descriptor"));
  EXPECT_THAT(programs(), ElementsAre("/sbin/iptables-restore"));
}

TEST_F(PacketFilter, AFileThatCannotBeRemovedIsTheResult) {
  ASSERT_EQ(0, mkdir(kRestoreFile, 0755));
  fp = fopen("/tmp/elsewhere", "w");
  EXPECT_EQ(-1, commitHandler());
  EXPECT_THAT(programs(), ElementsAre("/sbin/iptables-restore"));
}

const char* const kReset[] = {"/sbin/ip route flush table 100 > /dev/null 2>&1 ",
                              "/sbin/ip route flush table 101 > /dev/null 2>&1 ",
                              "/sbin/ip route flush table 102 > /dev/null 2>&1 ",
                              "/sbin/ip route flush table 103 > /dev/null 2>&1 ",
                              "/sbin/ip rule flush > /dev/null 2>&1 ",
                              "/sbin/ip rule add table main prio 32766 > /dev/null 2>&1 ",
                              "/sbin/ip rule add table default prio 32767 > /dev/null 2>&1 "};

std::vector<std::string> afterReset(std::vector<std::string> lines) {
  lines.insert(lines.begin(), std::begin(kReset), std::end(kReset));
  return lines;
}

class PolicyRouting : public PolicyTest {};

TEST(PolicyRoutingReset, RunsSevenCommands) {
  EXPECT_EQ(0, resetPolicyRules());
  EXPECT_THAT(shellLines(), ElementsAreArray(kReset));
}

TEST(PolicyRoutingReset, GivesTheResultOfTheLast) {
  answer("ip", "", 2);
  EXPECT_EQ(2 << 8, resetPolicyRules());
  EXPECT_EQ(7u, shellLines().size()) << "a failed command stops nothing";
}

TEST_F(PolicyRouting, CrossConnectsTheLanPortAndTheVlan) {
  pbrPolicyRule(1);
  EXPECT_THAT(shellLines(),
              ElementsAreArray(afterReset(
                  {"/sbin/ip rule add dev eth1 table 103 >> /dev/null  2>&1 ",
                   "/sbin/ip rule add dev eth0.12 table 102 >> /dev/null 2>&1 ",
                   "/sbin/ip route add default via 10.1.2.254 dev eth0.12 table 103          >> /dev/null 2>&1 ",
                   "/sbin/ip route add  10.1.2.0/24 dev eth0.12 table 103 >> /dev/null 2>&1 ",
                   "/sbin/ip route add default via 172.16.9.1 dev eth1 table 102          >> /dev/null 2>&1 ",
                   "/sbin/ip route add  172.16.0.0/16 dev eth1 table 102 >> /dev/null 2>&1 "})));
  EXPECT_EQ(1u, shm->config.lanPbrRouteSet);
  EXPECT_EQ(1u, shm->config.wanPbrRouteSet);
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(PolicyRouting, FailingCommandsStopNothing) {
  answer("ip", "", 2);
  pbrPolicyRule(0);
  EXPECT_EQ(13u, shellLines().size());
  EXPECT_EQ(1u, shm->config.lanPbrRouteSet);
  EXPECT_EQ(1u, shm->config.wanPbrRouteSet);
}

TEST_F(PolicyRouting, AMaskWithoutASubnetLeavesTheTextEmpty) {
  shm->config.lanIpAddressMask = 0;
  shm->config.wanIpAddressMask = quad("255.0.255.0");
  shm->config.lanGateway = 0;
  pbrPolicyRule(0);
  std::vector<std::string> lines = shellLines();
  ASSERT_EQ(13u, lines.size());
  EXPECT_EQ("/sbin/ip route add default via 0.0.0.0 dev eth0.12 table 103          >> /dev/null 2>&1 ", lines[9]);
  EXPECT_EQ("/sbin/ip route add   dev eth0.12 table 103 >> /dev/null 2>&1 ", lines[10]);
  EXPECT_EQ("/sbin/ip route add   dev eth1 table 102 >> /dev/null 2>&1 ", lines[12]);
}

TEST_F(PolicyRouting, TheVlanNameHoldsSixteenCharactersADotAndTheId) {
  memset(shm->config.bridgeRouterPhysicalName, 'b', 16);
  shm->config.lanVlanId = 4094;
  pbrPolicyRule(0);
  EXPECT_EQ("/sbin/ip rule add dev bbbbbbbbbbbbbbbb.4094 table 102 >> /dev/null 2>&1 ", shellLines().at(8));
}

TEST_F(PolicyRouting, TheIdIsPrintedAsASignedNumber) {
  shm->config.lanVlanId = 0xFFFFFFFFu;
  pbrPolicyRule(0);
  EXPECT_EQ("/sbin/ip rule add dev eth0.-1 table 102 >> /dev/null 2>&1 ", shellLines().at(8));
}

TEST_F(PolicyRouting, NamesWithShellCharactersReachNoShell) {
  strcpy(shm->config.physicalLanInterfaceName, "eth1;reboot");
  strcpy(shm->config.bridgeRouterPhysicalName, "`id`");
  pbrPolicyRule(0);
  EXPECT_THAT(shellLines(), ElementsAreArray(kReset));
  EXPECT_EQ(1u, shm->config.lanPbrRouteSet);
  EXPECT_EQ(1u, shm->config.wanPbrRouteSet);
}

TEST_F(PolicyRouting, EmptyNamesRunAsTheyAre) {
  strcpy(shm->config.physicalLanInterfaceName, "");
  strcpy(shm->config.bridgeRouterPhysicalName, "");
  pbrPolicyRule(0);
  ASSERT_EQ(13u, shellLines().size());
  EXPECT_EQ("/sbin/ip rule add dev  table 103 >> /dev/null  2>&1 ", shellLines()[7]);
  EXPECT_EQ("/sbin/ip rule add dev .12 table 102 >> /dev/null 2>&1 ", shellLines()[8]);
}

TEST_F(PolicyRouting, ALineOfTheRestoreFileMayLieInTheStore) {
  strcpy(shm->config.sysName, "-A INPUT -j ACCEPT");
  fp = fopen(kRestoreFile, "w");
  EXPECT_EQ(19, addToRestoreFile(shm->config.sysName));
  EXPECT_EQ(0, commitHandler());
  EXPECT_THAT(inputsOf("iptables-restore"), ElementsAre("-A INPUT -j ACCEPT\n" + kClosingLines));
}

TEST_F(PolicyRouting, AnOptionIsNoName) {
  strcpy(shm->config.physicalLanInterfaceName, "-batch");
  pbrPolicyRule(0);
  EXPECT_EQ(10u, shellLines().size()) << "the reset, and the lines with the VLAN alone";
}

TEST_F(PolicyRouting, ALongNameKeepsTheSignOfItsId) {
  memset(shm->config.bridgeRouterPhysicalName, 'b', 16);
  shm->config.lanVlanId = 0x80000000u;
  pbrPolicyRule(0);
  EXPECT_EQ("/sbin/ip rule add dev bbbbbbbbbbbbbbbb.-2147483648 table 102 >> /dev/null 2>&1 ", shellLines().at(8));
}

TEST_F(PolicyRouting, WithoutTheLockNothingRuns) {
  dropStore();
  pbrPolicyRule(1);
  pbrPolicyRule(0);
  EXPECT_THAT(shellLines(), IsEmpty());
}

TEST_F(PolicyRouting, UnlockedItAttachesTheStoreAndTakesNoLock) {
  shm_detach();
  shm = nullptr;
  pbrPolicyRule(0);
  EXPECT_EQ(13u, shellLines().size());
  EXPECT_EQ(0, shm_lock_count);
}

}  // namespace
}  // namespace kestrove::testing
