// SPDX-License-Identifier: Apache-2.0
// Counters that the kernel keeps.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "kestrove/stats.h"
#include "store/fail.h"
#include "sys/stream.h"

namespace kestrove {
namespace {

using sys::Stream;

constexpr char kUptimeFile[] = "/proc/uptime";
constexpr char kInterfacesFile[] = "/proc/net/dev";
constexpr char kSwappedInterface[] = "tap0";
constexpr double kTooMuch = 18446744073709551616.0;  // what 64 bits cannot hold

// Columns of a line of the kernel's list behind the name.
enum Column { kBytesIn = 0, kPacketsIn = 1, kDropsIn = 3, kBytesOut = 8, kPacketsOut = 9, kDropsOut = 11, kColumns };

[[nodiscard]] bool readSeconds(double& seconds) {
  Stream file(fopen(kUptimeFile, "re"));
  return file && fscanf(file.get(), "%lf", &seconds) == 1;
}

// The counters of a line when it is the named interface's: the text behind the colon. The heading lines have no colon.
[[nodiscard]] const char* countersOf(const char* line, const char* name) {
  line += strspn(line, " ");
  const char* colon = strchr(line, ':');
  size_t length = colon ? static_cast<size_t>(colon - line) : 0;
  return colon && strlen(name) == length && memcmp(line, name, length) == 0 ? colon + 1 : nullptr;
}

[[nodiscard]] bool parseCounters(const char* text, unsigned long long (&counter)[kColumns]) {
  for (unsigned long long& value : counter) {
    int used = 0;
    if (sscanf(text, "%llu%n", &value, &used) != 1) return false;
    text += used;
  }
  return true;
}

// The far end of the engine's own interface: what it sends the appliance has received.
InterfaceCounters countersFrom(const unsigned long long (&counter)[kColumns], bool swapped) {
  InterfaceCounters sent = {counter[kBytesOut],  counter[kBytesIn],  counter[kPacketsOut],
                            counter[kPacketsIn], counter[kDropsOut], counter[kDropsIn]};
  if (!swapped) return sent;
  return {sent.bytesReceived, sent.bytesSent,     sent.packetsReceived,
          sent.packetsSent,   sent.dropsReceived, sent.dropsSent};
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int getSystemUptime(uint32_t* out) {
  if (!out) return fail(SHM_EINVAL);
  *out = 0;
  double seconds;
  if (!readSeconds(seconds)) return -1;
  volatile double hundredths = seconds * 100;  // rounded to 64 bits on the 32-bit coprocessor too
  if (!(hundredths >= 0 && hundredths < kTooMuch)) return -1;
  *out = static_cast<uint32_t>(static_cast<uint64_t>(hundredths));
  return 0;
}

int readInterfaceStats(void* out, const char* interfaceName) {
  if (!out || !interfaceName) return fail(SHM_EINVAL);
  Stream file(fopen(kInterfacesFile, "re"));
  if (!file) return fail(SHM_EOPEN);
  char line[512];  // a name, sixteen numbers of twenty digits and the blanks between them
  while (fgets(line, sizeof line, file.get())) {
    const char* text = countersOf(line, interfaceName);
    if (!text) continue;
    unsigned long long counter[kColumns];
    if (!parseCounters(text, counter)) return fail(SHM_EIO);
    InterfaceCounters counters = countersFrom(counter, strcmp(interfaceName, kSwappedInterface) == 0);
    memcpy(out, &counters, sizeof counters);
    return 0;
  }
  return fail(SHM_ENOENT);
}
