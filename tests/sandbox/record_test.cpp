// SPDX-License-Identifier: Apache-2.0
// What the recorders write down, and what they answer.

#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>

#include "kestrove/system.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST(Record, ProgramsOfAShellLineAreRecordedNotRun) {
  EXPECT_EQ(0, system("/sbin/ip  rule flush > /dev/null 2>&1 "));
  EXPECT_THAT(shellLines(), ElementsAre("/sbin/ip  rule flush > /dev/null 2>&1 "));
  EXPECT_THAT(programs(), ElementsAre("/sbin/ip rule flush"));
}

TEST(Record, ArgumentsAreExact) {
  EXPECT_EQ(0, system("brctl 'a b' '' '\n'"));
  EXPECT_THAT(programs(), ElementsAre("brctl \"a b\" \"\" \n"));
}

TEST(Record, FileInputIsKept) {
  writeFile("/tmp/restore_file", "*filter\nCOMMIT\n");
  EXPECT_EQ(0, system("/sbin/iptables-restore < /tmp/restore_file"));
  EXPECT_THAT(inputsOf("iptables-restore"), ElementsAre("*filter\nCOMMIT\n"));
}

TEST(Record, FileToolsRunAndAreRecorded) {
  writeFile("/tmp/a", "text");
  EXPECT_EQ(0, system("cp /tmp/a /tmp/b"));
  EXPECT_EQ("text", readFile("/tmp/b"));
  EXPECT_THAT(programs(), ElementsAre("cp /tmp/a /tmp/b"));
}

TEST(Record, AnswersAreGiven) {
  answer("mii-diag", "hello\n", 3);
  EXPECT_EQ(3, WEXITSTATUS(system("/usr/bin/mii-diag -t eth0 > /tmp/mii.out")));
  EXPECT_EQ("hello\n", readFile("/tmp/mii.out"));
}

TEST(Record, EveryByteOfAnArgumentIsKept) {
  std::string bytes;
  for (int byte = 1; byte < 256; ++byte) bytes += static_cast<char>(byte);
  std::string name = "/sbin/ip";
  char* const arguments[] = {name.data(), bytes.data(), nullptr};
  EXPECT_EQ(0, runCommand(arguments, "/dev/null", "/dev/null"));
  EXPECT_THAT(programs(), ElementsAre("/sbin/ip \"" + bytes + '"'));
}

TEST(Record, OnlyFilesCountAsInput) {
  EXPECT_EQ(0, system("echo text | /sbin/iptables-restore"));
  EXPECT_EQ(0, system("/sbin/iptables-restore < /dev/null"));
  EXPECT_THAT(inputsOf("iptables-restore"), IsEmpty());
}

TEST(Record, RealProgramGetsItsInputAfterTheRecorder) {
  writeFile("/tmp/in", "line\n");
  EXPECT_EQ(0, system("cat < /tmp/in > /tmp/out"));
  EXPECT_EQ("line\n", readFile("/tmp/out"));
  EXPECT_THAT(inputsOf("cat"), ElementsAre("line\n"));
}

TEST(Record, RunsAtTheSameTimeDoNotMix) {
  constexpr size_t kRuns = 64;
  EXPECT_EQ(0, system("for i in 1 2 3 4 5 6 7 8; do for j in 1 2 3 4 5 6 7 8; do"
                      " /sbin/ip link show dev some-interface & done; done; wait"));
  EXPECT_THAT(programs(), AllOf(SizeIs(kRuns), Each("/sbin/ip link show dev some-interface")));
}

TEST(Record, AppliancePrograms) {
  const std::vector<std::string> all = {"/sbin/iptables-restore",
                                        "/sbin/iptables",
                                        "/sbin/ip6tables",
                                        "/sbin/ip",
                                        "/sbin/vconfig",
                                        "/sbin/ifconfig",
                                        "ifconfig",
                                        "/usr/sbin/brctl",
                                        "/usr/bin/mii-diag",
                                        "/sbin/dhcpcd",
                                        "/usr/bin/arping",
                                        "zip",
                                        "/usr/bin/unzip",
                                        "/bin/date",
                                        "/sbin/hwclock",
                                        "/sbin/reboot",
                                        "/sbin/poweroff",
                                        "/usr/bin/killall",
                                        "/usr/bin/apacheConfig.sh",
                                        "/usr/local/squid/sbin/squid",
                                        "/bin/shm-init",
                                        "/sbin/FtwWdgCtl",
                                        "/usr/bin/snmpdConfig.sh",
                                        "/usr/bin/init-bridging",
                                        "/bin/restartKestrove",
                                        "/usr/bin/sshdConfig.sh"};
  for (const std::string& program : all) EXPECT_EQ(0, system((program + " x > /tmp/out 2>&1").c_str())) << program;
  EXPECT_EQ("", readFile("/tmp/out"));
  std::vector<std::string> expected;
  for (const std::string& program : all) expected.push_back(program + " x");
  EXPECT_EQ(expected, programs());
}

TEST(Record, AnswerMayTakeItsTime) {
  writeFile("/run/kestrove/answers/dhcpcd.sleep", "0.2");
  timespec before, after;
  clock_gettime(CLOCK_MONOTONIC, &before);
  EXPECT_EQ(0, system("/sbin/dhcpcd -t 1 -L  eth0"));
  clock_gettime(CLOCK_MONOTONIC, &after);
  double seconds = difftime(after.tv_sec, before.tv_sec) + 1e-9 * static_cast<double>(after.tv_nsec - before.tv_nsec);
  EXPECT_GE(seconds, 0.2);
}

TEST(Record, ClearForgets) {
  EXPECT_EQ(0, system("true"));
  clearRecords();
  EXPECT_THAT(shellLines(), IsEmpty());
}

}  // namespace
}  // namespace kestrove::testing
