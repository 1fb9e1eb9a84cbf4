// SPDX-License-Identifier: Apache-2.0
// Servers, clock, reboot and power-off, engine restart.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <syslog.h>

#include "kestrove/codes.h"
#include "kestrove/events.h"
#include "kestrove/items.h"
#include "kestrove/management.h"
#include "kestrove/system.h"
#include "store/fail.h"
#include "store/lock.h"
#include "sys/command.h"
#include "sys/pause.h"
#include "sys/stream.h"

namespace kestrove {
namespace {

constexpr char kNull[] = "/dev/null";
constexpr char kWebServerPid[] = "/usr/local/apache2/logs/httpd.pid";
constexpr int kPidSize = 10;
constexpr int kAddressListSize = 322;

constexpr char kConfigureWeb[] = "/usr/bin/apacheConfig.sh %s";
constexpr char kHangUpWeb[] = "/bin/kill -s SIGHUP %s > /dev/null 2>&1";
constexpr char kConfigureSnmp[] = "/usr/bin/snmpdConfig.sh %s > /dev/null 2>&1";
constexpr char kConfigureSsh[] = "/usr/bin/sshdConfig.sh %s";
constexpr char kKillEngine[] = "/usr/bin/killall kestrove > /dev/null 2>&1";
constexpr char kSetClock[] = "/bin/date -u -s %d.%d.%d-%d:%d:%d > /dev/null 2>&1";
constexpr char kSetHardwareClock[] = "/sbin/hwclock -u --systohc";

// No shell sees these: kill gets the back-quoted text as it stands, kept on purpose.
constexpr const char* kHangUpSnmp[] = {"/bin/kill", "-s", "SIGHUP", "`pidof snmpd`", nullptr};
constexpr const char* kHangUpSsh[] = {"/bin/kill", "-s", "SIGHUP", "`cat /var/run/sshd.pid`", nullptr};
constexpr const char* kReboot[] = {"/sbin/reboot", nullptr};
constexpr const char* kPowerOff[] = {"/sbin/poweroff", nullptr};
constexpr const char* kKillallEngine[] = {"/usr/bin/killall", "kestrove", nullptr};

enum ClockField { kSeconds, kMinutes, kHours, kDay, kMonth, kYear };

int runQuietly(const char* const argv[]) { return runCommand(const_cast<char* const*>(argv), kNull, kNull); }

// The text is empty when there is none.
void readWebServerPid(char (&pid)[kPidSize]) {
  pid[0] = '\0';
  sys::Stream file(fopen(kWebServerPid, "re"));
  if (!file) {
    syslog(LOG_ERR, "refresh: Can't open %s\n", kWebServerPid);
    return;
  }
  if (!fgets(pid, sizeof pid, file.get())) syslog(LOG_ERR, "refresh bad pid from %s\n", kWebServerPid);
  pid[strcspn(pid, "\n")] = '\0';
}

// The scripts may ask the store for what they write. The servers are told to read it again whatever became of them.
void runScript(const char* format, const sys::Word& list) {
  LockPause pause;
  sys::tryLine(format, {list});
}

bool active(int item) { return isProcessActive(item) == SHM_ON; }

void hangUp(int item, const char* const argv[], const char* failure) {
  if (active(item) && runQuietly(argv) == -1) syslog(LOG_DEBUG, "%s", failure);
}

int setClocks(const int32_t when[6]) {
  using sys::Word;
  if (sys::runLine(kSetClock,
                   {Word::number(when[kYear]), Word::number(when[kMonth]), Word::number(when[kDay]),
                    Word::number(when[kHours]), Word::number(when[kMinutes]), Word::number(when[kSeconds])}) < 0) {
    return -1;
  }
  return callSystem(kSetHardwareClock);
}

// The event comes first: nothing is logged once the system goes down. An event that is not logged stops nothing.
int leaveSystem(uint32_t event, const char* const argv[], uint32_t source, const char* user) {
  logEvent(event, source, user);
  return runQuietly(argv);
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int isProcessActive(int item) {
  uint32_t value;
  return getKestroveConfigItem(item, &value) == 0 ? static_cast<int>(value) : SHM_OFF;
}

int refresh_userinterface_apps(void) {
  char addresses[kAddressListSize] = "";
  getManagementAddressList(addresses, sizeof addresses);
  sys::Word list = sys::Word::address(addresses);
  char pid[kPidSize];
  readWebServerPid(pid);
  runScript(kConfigureWeb, list);
  if (active(SHM_ITEM_WEB)) sys::tryLine(kHangUpWeb, {sys::Word::pid(pid)});
  runScript(kConfigureSnmp, list);
  hangUp(SHM_ITEM_SNMP, kHangUpSnmp, "killing snmp didnt work");
  runScript(kConfigureSsh, list);
  hangUp(SHM_ITEM_SSH, kHangUpSsh, "killing ssh didn't work");
  return 0;
}

int setSystemTime(const int32_t when[6], uint32_t source, const char* user) {
  if (!when) return fail(SHM_EINVAL);
  if (setKestroveConfigItem(SHM_ITEM_ENGINE, SHM_OFF, source, user) != 0) return -1;
  // The engine may end by itself when it is switched off; then there is nothing to kill.
  sys::pauseSeconds(1);
  callSystem(kKillEngine);
  if (setClocks(when) < 0) return fail(SHM_ESYSTEM);  // the engine stays switched off
  setKestroveConfigItem(SHM_ITEM_ENGINE, SHM_ON, source, user);
  logEvent(SHM_EVENT_TIME_SET, source, user);
  return 0;
}

int reboot(uint32_t source, const char* user) { return leaveSystem(SHM_EVENT_SYSTEM_REBOOTED, kReboot, source, user); }

int shutdownSystem(uint32_t source, const char* user) {
  return leaveSystem(SHM_EVENT_SYSTEM_STOPPED, kPowerOff, source, user);
}

int restart_kestrove(uint32_t source, const char* user) {
  StoreLock lock;
  if (!lock) return -1;
  // A start by hand begins new counts; one that cannot be saved does not keep the engine from starting.
  resetKestroveRestartCounter();
  resetKestroveRebootCounter();
  setKestroveConfigItem(SHM_ITEM_ENGINE, SHM_ON, source, user);
  if (source == SHM_SOURCE_ENGINE) {
    syslog(LOG_INFO, "restart_kestrove: exiting kestrove");
    exit(0);  // the caller is the engine itself
  }
  syslog(LOG_INFO, "restart_kestrove: calling killall");
  return runQuietly(kKillallEngine);
}
