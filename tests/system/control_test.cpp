// SPDX-License-Identifier: Apache-2.0
// System control; every program is recorded.
#include <string.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include "tests/support/deny.h"
#include "tests/support/peer.h"
#include "tests/support/recorder.h"
#include "tests/system/system_fixture.h"

namespace kestrove::testing {
namespace {

constexpr char kWebPid[] = "/usr/local/apache2/logs/httpd.pid";
const uint32_t kAddress = 0x0101A8C0;  // 192.168.1.1

void addApplied(uint32_t address) {
  ManagementAddress& entry = shm->managementAddress[shm->managementAddressCount++];
  entry.ipVersion = 4;
  entry.status = 1;
  entry.address = address;
  entry.mask = 0x00FFFFFF;
  entry.interfaceKind = 4;
}

Lines errors() {
  Lines found;
  for (const std::string& line : syslogLines()) {
    if (line.rfind("err: ", 0) == 0) found.push_back(line);
  }
  return found;
}

TEST_F(ProcessTest, RefreshRewritesAndHangsUpEveryServerInItsOrder) {
  shm->config.httpOperState = shm->config.snmpOperState = shm->config.sshdOperState = 1;
  addApplied(kAddress);
  addApplied(0x0200000A);
  writeFile(kWebPid, "424242\n");
  EXPECT_EQ(0, refresh_userinterface_apps());
  EXPECT_EQ((Lines{"/usr/bin/apacheConfig.sh  192.168.1.1 10.0.0.2", "/bin/kill -s SIGHUP 424242 > /dev/null 2>&1",
                   "/usr/bin/snmpdConfig.sh  192.168.1.1 10.0.0.2 > /dev/null 2>&1",
                   "/usr/bin/sshdConfig.sh  192.168.1.1 10.0.0.2"}),
            shellLines());
  Lines started;
  for (const std::string& line : programs()) {
    if (line.find("SIGHUP \"") != std::string::npos || line.find("Config.sh") != std::string::npos) {
      started.push_back(line.substr(0, line.find(" 192")));
    }
  }
  EXPECT_EQ((Lines{"/usr/bin/apacheConfig.sh", "/usr/bin/snmpdConfig.sh", "/bin/kill -s SIGHUP \"`pidof snmpd`\"",
                   "/usr/bin/sshdConfig.sh", "/bin/kill -s SIGHUP \"`cat /var/run/sshd.pid`\""}),
            started);
  EXPECT_TRUE(errors().empty());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(ProcessTest, RefreshHangsUpNoServerThatIsSwitchedOff) {
  shm->config.httpOperState = shm->config.snmpOperState = shm->config.sshdOperState = 2;
  writeFile(kWebPid, "424242\n");
  EXPECT_EQ(0, refresh_userinterface_apps());
  EXPECT_EQ(
      (Lines{"/usr/bin/apacheConfig.sh ", "/usr/bin/snmpdConfig.sh  > /dev/null 2>&1", "/usr/bin/sshdConfig.sh "}),
      shellLines());
  for (const std::string& line : programs()) EXPECT_EQ(std::string::npos, line.find("kill")) << line;
}

TEST_F(ProcessTest, RefreshGoesOnWithoutAPid) {
  shm->config.httpOperState = 1;
  unlink(kWebPid);
  EXPECT_EQ(0, refresh_userinterface_apps());
  EXPECT_EQ((Lines{"err: refresh: Can't open /usr/local/apache2/logs/httpd.pid\n"}), errors());
  ASSERT_EQ(4u, shellLines().size());
  EXPECT_EQ("/bin/kill -s SIGHUP  > /dev/null 2>&1", shellLines()[1]);
  clearSyslog();
  clearRecords();
  writeFile(kWebPid, "");
  EXPECT_EQ(0, refresh_userinterface_apps());
  EXPECT_EQ((Lines{"err: refresh bad pid from /usr/local/apache2/logs/httpd.pid\n"}), errors());
  EXPECT_EQ("/bin/kill -s SIGHUP  > /dev/null 2>&1", shellLines().at(1));
}

TEST_F(ProcessTest, RefreshTakesNineCharactersOfThePid) {
  shm->config.httpOperState = 1;
  writeFile(kWebPid, "12345678901\n2\n");
  EXPECT_EQ(0, refresh_userinterface_apps());
  EXPECT_EQ("/bin/kill -s SIGHUP 123456789 > /dev/null 2>&1", shellLines().at(1));
}

TEST_F(ProcessTest, APidThatIsNoNumberReachesNoShell) {
  shm->config.httpOperState = 1;
  writeFile(kWebPid, "1;reboot\n");
  EXPECT_EQ(0, refresh_userinterface_apps());
  EXPECT_EQ(3u, shellLines().size());
  EXPECT_EQ(1u, errors().size());
}

TEST_F(ProcessTest, APidOfNoServerIsNotSignalled) {
  shm->config.httpOperState = 1;
  for (const char* pid : {"0\n", "1\n", "-1\n", "0001\n"}) {
    clearRecords();
    writeFile(kWebPid, pid);
    EXPECT_EQ(0, refresh_userinterface_apps());
    for (const std::string& line : shellLines()) EXPECT_EQ(line.npos, line.find("kill")) << line;
  }
}

TEST_F(ProcessTest, RefreshLogsAKillThatCouldNotBeRun) {
  shm->config.snmpOperState = shm->config.sshdOperState = 1;
  inOtherProcess([] {
    denySystemCall(kSetUid);
    return refresh_userinterface_apps();
  });
  Lines debug;
  for (const std::string& line : syslogLines()) {
    if (line.rfind("debug: killing", 0) == 0) debug.push_back(line);
  }
  EXPECT_EQ((Lines{"debug: killing snmp didnt work", "debug: killing ssh didn't work"}), debug);
}

TEST_F(ProcessTest, TheClockIsSetWithTheEngineSwitchedOff) {
  shm->config.kestroveOperState = 1;
  timeval start, end;
  gettimeofday(&start, nullptr);
  const int32_t when[6] = {59, 8, 23, 31, 12, 2030};
  EXPECT_EQ(0, setSystemTime(when, 4, "jane"));
  gettimeofday(&end, nullptr);
  EXPECT_GE((end.tv_sec - start.tv_sec) * 1000000 + end.tv_usec - start.tv_usec, 1000000);
  EXPECT_EQ((Lines{"/usr/bin/killall kestrove > /dev/null 2>&1", "/bin/date -u -s 2030.12.31-23:8:59 > /dev/null 2>&1",
                   "/sbin/hwclock -u --systohc"}),
            shellLines());
  EXPECT_EQ(1, shm->config.kestroveOperState);
  EXPECT_EQ(1u, shm->eventLog.writeIndex);
  EXPECT_EQ(13u, shm->eventLog.record[0].eventId);
  EXPECT_EQ(4u, shm->eventLog.record[0].source);
  EXPECT_STREQ("jane", shm->eventLog.record[0].userName);
  EXPECT_FALSE(fileExists(kConfigFile));
}

TEST_F(ProcessTest, AClockToolThatRunsAndFailsCountsAsDone) {
  answer("hwclock", "", 1);
  const int32_t when[6] = {-1, INT32_MIN, INT32_MAX, 0, 0, 0};
  EXPECT_EQ(0, setSystemTime(when, 0, "--"));
  EXPECT_EQ("/bin/date -u -s 0.0.0-2147483647:-2147483648:-1 > /dev/null 2>&1", shellLines().at(1));
  EXPECT_EQ(1, shm->config.kestroveOperState);
}

TEST_F(ProcessTest, AClockThatCannotBeSetLeavesTheEngineOff) {
  shm->config.kestroveOperState = 1;
  EXPECT_EQ(2, inOtherProcess([] {
              denySystemCall(kSetUid);
              const int32_t when[6] = {0, 0, 0, 1, 1, 2030};
              return setSystemTime(when, 0, "--") == -1 ? static_cast<int>(shm_errno) : 99;
            }));
  EXPECT_EQ(2, shm->config.kestroveOperState);
  EXPECT_EQ(0u, shm->eventLog.writeIndex);
  EXPECT_TRUE(shellLines().empty());
}

TEST_F(ProcessTest, NoTimeIsNoSetting) {
  shm->config.kestroveOperState = 1;
  EXPECT_FAILS_WITH(SHM_EINVAL, setSystemTime(nullptr, 0, "--"));
  EXPECT_EQ(1, shm->config.kestroveOperState);
}

TEST_F(ProcessTest, RebootAndPowerOffLogAndRunTheirProgram) {
  EXPECT_EQ(0, reboot(3, "jane"));
  EXPECT_EQ(0, shutdownSystem(4, "joe"));
  EXPECT_EQ((Lines{"/sbin/reboot", "/sbin/poweroff"}), programs());
  EXPECT_EQ(3u, shm->eventLog.record[0].eventId);
  EXPECT_EQ(3u, shm->eventLog.record[0].source);
  EXPECT_STREQ("jane", shm->eventLog.record[0].userName);
  EXPECT_EQ(1u, shm->eventLog.record[1].eventId);
  EXPECT_EQ(4u, shm->eventLog.record[1].source);
  EXPECT_STREQ("joe", shm->eventLog.record[1].userName);
}

TEST_F(ProcessTest, TheResultOfRebootIsThatOfItsProgram) {
  answer("reboot", "", 5);
  answer("poweroff", "", 6);
  EXPECT_EQ(5, reboot(0, "--"));
  EXPECT_EQ(6, shutdownSystem(0, "--"));
}

void wearOut() {
  shm->config.kestroveRestartCount = 5;
  shm->config.kestroveRebootCount = 5;
  shm->config.kestroveOperState = 2;
}

void expectFresh() {
  EXPECT_EQ(0u, shm->config.kestroveRestartCount);
  EXPECT_EQ(0u, shm->config.kestroveRebootCount);
  EXPECT_EQ(1, shm->config.kestroveOperState);
}

TEST_F(ProcessTest, RestartingTheEngineClearsTheCountersAndKillsIt) {
  wearOut();
  answer("killall", "", 1);
  EXPECT_EQ(1, restart_kestrove(2, "jane"));
  expectFresh();
  EXPECT_TRUE(fileExists(kConfigFile));
  EXPECT_EQ((Lines{"/usr/bin/killall kestrove"}), programs());
  EXPECT_EQ("info: restart_kestrove: calling killall", syslogLines().back());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(ProcessTest, TheEngineThatRestartsItselfExits) {
  wearOut();
  EXPECT_EQ(0, inOtherProcess([] {
              restart_kestrove(1, "--");
              return 77;
            }));
  expectFresh();
  EXPECT_TRUE(programs().empty());
  EXPECT_EQ("info: restart_kestrove: exiting kestrove", syslogLines().back());
}

TEST_F(ProcessTest, AFailedSaveDoesNotKeepTheEngineFromRestarting) {
  wearOut();
  ASSERT_EQ(0, mkdir(kConfigFile, 0755));
  EXPECT_EQ(0, restart_kestrove(0, "--"));
  expectFresh();
  EXPECT_EQ((Lines{"/usr/bin/killall kestrove"}), programs());
}

TEST_F(ProcessTest, AnUnreadableItemCountsAsOff) {
  shm->config.snmpOperState = 1;
  shm->config.httpOperState = 2;
  shm->config.sshdOperState = 0;
  EXPECT_EQ(1, isProcessActive(11));
  EXPECT_EQ(2, isProcessActive(13));
  EXPECT_EQ(0, isProcessActive(17));
  for (int id : {-1, 0, 21, 59, INT32_MAX}) EXPECT_EQ(2, isProcessActive(id));
}

TEST_F(ProcessTest, SystemControlNeedsTheStore) {
  dropStore();
  char buffer[16];
  const int32_t when[6] = {};
  EXPECT_FAILS_WITH(SHM_EATTACH, setSystemTime(when, 0, "--"));
  EXPECT_FAILS_WITH(SHM_EATTACH, restart_kestrove(0, "--"));
  EXPECT_FAILS_WITH(SHM_EATTACH, incrKestroveRestartCounter());
  EXPECT_FAILS_WITH(SHM_EATTACH, resetKestroveRestartCounter());
  EXPECT_FAILS_WITH(SHM_EATTACH, incrKestroveRebootCounter());
  EXPECT_FAILS_WITH(SHM_EATTACH, checkKestroveRebootCounter());
  EXPECT_FAILS_WITH(SHM_EATTACH, resetKestroveRebootCounter());
  EXPECT_FAILS_WITH(SHM_EATTACH, getUnitId(buffer, 16));
  EXPECT_FAILS_WITH(SHM_EATTACH, getLastLoginTimeStamp("x"));
  EXPECT_FAILS_WITH(SHM_EATTACH, setLastLoginTimeStamp("x"));
  EXPECT_FAILS_WITH(SHM_EATTACH, shm_getTaskPid(1));
  EXPECT_FAILS_WITH(SHM_EATTACH, shm_setTaskPid(1, 1));
  EXPECT_EQ(nullptr, shm_getMonitoredTaskPointer());
  EXPECT_EQ(2, isProcessActive(11));
  EXPECT_TRUE(shellLines().empty());
  EXPECT_TRUE(programs().empty());
  EXPECT_EQ(0, refresh_userinterface_apps());
  makeStore();
}

}  // namespace
}  // namespace kestrove::testing
