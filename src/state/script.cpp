// SPDX-License-Identifier: Apache-2.0
// The command script whole, and its sections by themselves.
#include "state/script.h"

#include <limits.h>
#include <stdio.h>
#include <unistd.h>

#include "kestrove/state.h"
#include "state/paths.h"
#include "store/fail.h"
#include "store/lock.h"
#include "sys/stream.h"

namespace kestrove {
namespace {

using sys::TextWriter;

constexpr char kScript[] = STATE_DOCUMENTS "state-%s.txt";
constexpr uint32_t kPlatformWithManagementPort = 14;

// What the writer puts out goes to the stream, and on to its file.
template <typename Write>
[[nodiscard]] int writeTo(FILE* stream, Write write) {
  sys::StreamTarget target{stream};
  TextWriter out(target);
  write(out);
  return out.flush() && fflush(stream) == 0 ? 0 : -1;
}

[[nodiscard]] int writeSection(FILE* stream, void (*write)(TextWriter&)) {
  if (!stream) return fail(SHM_EINVAL);
  StoreLock lock;
  return lock ? writeTo(stream, write) : -1;
}

void writeScript(TextWriter& out) {
  uint32_t product = shm->config.productId;
  bool managementPort = shm->config.hardwarePlatform == kPlatformWithManagementPort;
  writeRates(out);
  writeManagementAddresses(out);
  writeInterfaceMode(out);
  writePolicyRouting(out);
  writeServices(out);
  writeAccelerationMode(out, product);
  static_cast<void>(writeLink(out, 0));  // the numbers of all three are known
  static_cast<void>(writeLink(out, 1));
  if (managementPort) static_cast<void>(writeLink(out, 3));
  writeRoutes(out);
  writeRoutes6(out);
  writeRules(out);
}

}  // namespace

// A script that could not be written whole is removed: a part of one would set a part of the settings.
int writeScriptFile(const char* timestamp) {
  char path[PATH_MAX];
  if (snprintf(path, sizeof path, kScript, timestamp) >= PATH_MAX) return -1;
  sys::Stream script(fopen(path, "w+e"));
  if (!script) return -1;
  setvbuf(script.get(), nullptr, _IONBF, 0);  // the writer has its own, larger buffer
  int result = writeTo(script.get(), writeScript);
  if (script.close() == 0 && result == 0) return 0;
  unlink(path);
  return -1;
}

}  // namespace kestrove

using namespace kestrove;

int __saveCliState(const char* timestamp) {
  if (!timestamp) return fail(SHM_EINVAL);
  StoreLock lock;
  return lock ? writeScriptFile(timestamp) : -1;
}

int __saveManagement(FILE* stream) { return writeSection(stream, writeManagementAddresses); }
int __saveRoutes(FILE* stream) { return writeSection(stream, writeRoutes); }
int __saveIpv6Routes(FILE* stream) { return writeSection(stream, writeRoutes6); }
int __saveSARules(FILE* stream) { return writeSection(stream, writeRules); }

int __saveLink(FILE* stream, int which) {
  if (!stream) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  bool known = false;
  int result = writeTo(stream, [&](TextWriter& out) { known = writeLink(out, which); });
  return known ? result : fail(SHM_EINVAL);
}

int __printRoute(FILE* stream, const RouteEntry* route) {
  if (!stream || !route) return fail(SHM_EINVAL);
  return writeTo(stream, [&](TextWriter& out) { writeRoute(out, *route); });
}

int __printIpv6Route(FILE* stream, const Route6Entry* route) {
  if (!stream || !route) return fail(SHM_EINVAL);
  return writeTo(stream, [&](TextWriter& out) { writeRoute6(out, *route); });
}
