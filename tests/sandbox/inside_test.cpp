// SPDX-License-Identifier: Apache-2.0
// What a program finds inside the appliance.

#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <syslog.h>
#include <time.h>
#include <unistd.h>

#include "tests/support/recorder.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST(Inside, IsRootOfAnOwnHost) {
  char name[64] = "";
  gethostname(name, sizeof name);
  EXPECT_STREQ("kestrove", name);
  EXPECT_EQ(0u, geteuid());
}

TEST(Inside, SystemFoldersAreWritable) {
  for (const char* folder : {"/etc/config", "/var/log/kestrove", "/tmp", "/run", "/var/lock", "/usr/bin", "/var/run"}) {
    writeFile(std::string(folder) + "/mark", "x");
  }
}

TEST(Syslog, MessagesKeepTheirOrderLevelsAndLines) {
  syslog(LOG_ERR, "first: %s", "with a colon");
  syslog(LOG_DEBUG, "second\nof two lines");
  EXPECT_THAT(syslogLines(), ElementsAre("err: first: with a colon", "debug: second\nof two lines"));
}

TEST(Syslog, ClearForgets) {
  syslog(LOG_INFO, "before");
  clearSyslog();
  EXPECT_THAT(syslogLines(), IsEmpty());
  syslog(LOG_INFO, "after");
  EXPECT_THAT(syslogLines(), ElementsAre("info: after"));
}

TEST(Syslog, OtherProcessesAndBurstsArrive) {
  constexpr int kMessages = 3000;
  pid_t child = fork();
  if (child == 0) {
    for (int i = 0; i < kMessages; ++i) syslog(LOG_WARNING, "message %d", i);
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  const std::vector<std::string> lines = syslogLines();
  ASSERT_THAT(lines, SizeIs(kMessages));
  EXPECT_EQ("warning: message 0", lines.front());
  EXPECT_EQ("warning: message 2999", lines.back());
}

TEST(Syslog, TagsAndNumbersAreStripped) {
  openlog("some program", LOG_PID, LOG_LOCAL3);
  syslog(LOG_NOTICE, "%s", "");
  syslog(LOG_EMERG, "[not a pid]: text");
  closelog();
  EXPECT_THAT(syslogLines(), ElementsAre("notice: ", "emerg: [not a pid]: text"));
}

TEST(Syslog, LongMessagesAreWhole) {
  const std::string text(8000, 'x');
  syslog(LOG_INFO, "%s", text.c_str());
  EXPECT_THAT(syslogLines(), ElementsAre("info: " + text));
}

TEST(Inside, StartsWithoutConfigurationOrSegment) {
  for (const char* path : {"/etc/config/kestrove.conf", "/etc/config/factory.defaults", "/var/lock/shm",
                           "/var/log/kestrove/event.log", "/tmp/restore_file"}) {
    EXPECT_FALSE(fileExists(path)) << path;
  }
  EXPECT_EQ(-1, shmget(SHM_KEY, 0, 0));
}

TEST(Inside, ExamplesAreAtHand) {
  EXPECT_THAT(readFile("/usr/share/kestrove/examples/factory.defaults"), HasSubstr("PRODUCT_ID"));
  EXPECT_THAT(readFile("/usr/share/kestrove/examples/kestrove.conf"), HasSubstr("LAN_ADDR"));
}

TEST(RealMode, MachineProgramsAreAtTheAppliancesPaths) {
  for (const char* path :
       {"/sbin/iptables-restore", "/sbin/iptables", "/sbin/ip6tables", "/sbin/ip", "/sbin/vconfig", "/sbin/ifconfig",
        "/sbin/dhcpcd", "/usr/sbin/brctl", "/usr/bin/arping", "/usr/bin/unzip", "/usr/bin/zip", "/bin/kill"}) {
    struct stat program, recorder;
    ASSERT_EQ(0, stat(path, &program)) << path;
    ASSERT_EQ(0, stat("/run/kestrove/recorder", &recorder));
    EXPECT_NE(recorder.st_ino, program.st_ino) << path << " is recorded: the machine lacks it";
  }
}

TEST(RealMode, WhatMustNotRunIsRecorded) {
  EXPECT_EQ(0, system("/sbin/reboot; /sbin/poweroff; /sbin/hwclock -u --systohc; /usr/bin/mii-diag -t eth0;"
                      "/bin/date -u -s 2001.1.1-0:0:0 && /usr/local/squid/sbin/squid -k rotate"));
  EXPECT_THAT(programs(),
              ElementsAre("/sbin/reboot", "/sbin/poweroff", "/sbin/hwclock -u --systohc", "/usr/bin/mii-diag -t eth0",
                          "/bin/date -u -s 2001.1.1-0:0:0", "/usr/local/squid/sbin/squid -k rotate"));
  EXPECT_LT(1600000000, time(nullptr));
}

TEST(RealMode, DateTellsTheTime) {
  EXPECT_EQ(0, system("/bin/date -u +%Y > /tmp/year"));
  EXPECT_LT(2020, std::stoi(readFile("/tmp/year")));
}

TEST(RealMode, TheShellIsRecordedAndRuns) {
  EXPECT_EQ(3 << 8, system("echo  x > /tmp/out ; exit 3"));
  EXPECT_THAT(shellLines(), ElementsAre("echo  x > /tmp/out ; exit 3"));
  EXPECT_EQ("x\n", readFile("/tmp/out"));
}

}  // namespace
}  // namespace kestrove::testing
