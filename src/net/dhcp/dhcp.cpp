// SPDX-License-Identifier: Apache-2.0
// One address asked for by the DHCP client, and its lease handed to the caller.
#include "kestrove/dhcp.h"

#include <limits.h>
#include <stdio.h>
#include <string.h>
#include <sys/times.h>
#include <syslog.h>
#include <unistd.h>

#include <string_view>

#include "net/dhcp/lease.h"
#include "store/fail.h"
#include "store/lock.h"
#include "sys/command.h"
#include "sys/stream.h"

namespace kestrove {
namespace {

using sys::Word;

constexpr char kClient[] = "/sbin/dhcpcd";
constexpr char kClientLine[] = "%s -t %d -L  %s";
constexpr char kPidFile[] = "/var/run/dhcpcd-%.49s.pid";
constexpr char kLeaseFile[] = "/var/lib/dhcpcd/dhcpcd-%.49s.info";
constexpr size_t kPathSize = 128;
constexpr size_t kPidLineSize = 120;
constexpr size_t kClientLineSize = 1024;

long ticksPerSecond = 0;

// The line without what stands behind the number.
std::string_view number(std::string_view line) {
  line = line.substr(0, line.find('\n'));
  while (line.ends_with(' ') || line.ends_with('\t')) line.remove_suffix(1);
  return line;
}

// A client that still runs for the interface is stopped by the process id that it left.
void stopStaleClient(const char* name) {
  char path[kPathSize];
  snprintf(path, sizeof path, kPidFile, name);
  sys::Stream file(fopen(path, "re"));
  char pid[kPidLineSize];
  if (!file || !fgets(pid, sizeof pid, file.get())) return;
  // A process that is gone already is what was wanted.
  static_cast<void>(sys::runLineAsCaller("kill %s", {Word::pid(number(pid))}));
}

bool readTicks(clock_t& ticks, const char* format, const char* moment) {
  struct tms unused;
  ticks = times(&unused);
  if (ticks != static_cast<clock_t>(-1)) return true;
  syslog(LOG_ERR, format, moment);
  return false;
}

// The tick counter may wrap.
long elapsedSeconds(clock_t start, clock_t end) {
  auto ticks = static_cast<long>(static_cast<unsigned long>(end) - static_cast<unsigned long>(start));
  ticksPerSecond = sysconf(_SC_CLK_TCK);
  if (ticksPerSecond < 0) syslog(LOG_ERR, "DHCP sysconf error\n");
  return ticksPerSecond != 0 ? ticks / ticksPerSecond : 0;
}

int notAssigned() {
  syslog(LOG_ERR, "DHCP err:  %s\n", "address NOT assigned");
  return -1;
}

// The client's hooks may use the store.
int runClient(const char* line) {
  LockPause pause;
  return sys::runShellAsCaller(line);
}

// A lease that cannot be read after a good run is logged and no more.
void handLeaseOver(const char* path, DhcpCallback callback, uint32_t* kind) {
  sys::Stream file(fopen(path, "re"));
  if (!file) {
    syslog(LOG_ERR, "DHCP file err %s\n", path);
    return;
  }
  readLease(file.get(), callback, kind);
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

// A lease that arrives only at the deadline counts as none.
int dhcp_start(const char* name, int timeoutSeconds, DhcpCallback callback, uint32_t* kindOut) {
  if (!name || !kindOut) return fail(SHM_EINVAL);
  char line[kClientLineSize];
  bool plain = sys::formatLine(line, sizeof line, kClientLine,
                               {Word::fixed(kClient), Word::number(timeoutSeconds), Word::name(name)});
  if (!plain) return notAssigned();
  char lease[kPathSize];  // before anything can change a name that lies in the store
  snprintf(lease, sizeof lease, kLeaseFile, name);
  stopStaleClient(name);
  clock_t start, end;
  if (!readTicks(start, "DHCP time err %s\n", "start")) return -1;
  int status = runClient(line);
  if (!readTicks(end, "DHCP time err:  %s\n", "end")) return -1;
  if (status != 0) return notAssigned();
  long seconds = elapsedSeconds(start, end);
  printf("time_sec= %d;  timeout=%d \n ", static_cast<int>(seconds), timeoutSeconds);
  if (seconds >= timeoutSeconds) return notAssigned();
  handLeaseOver(lease, callback, kindOut);
  return 0;
}
