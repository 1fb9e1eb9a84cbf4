// SPDX-License-Identifier: Apache-2.0
#include "state/archive.h"
#include "kestrove/codes.h"

#include <limits.h>
#include <stdio.h>
#include <syslog.h>

#include "kestrove/events.h"
#include "kestrove/state.h"
#include "kestrove/system.h"
#include "state/paths.h"
#include "state/staging.h"
#include "store/fail.h"
#include "store/lock.h"
#include "sys/command.h"

namespace kestrove {
namespace {

using sys::Word;

constexpr char kArchive[] = STATE_DOCUMENTS "config-%s.zip";
constexpr char kZip[] = "zip -j %s " STATE_STAGING "* > /dev/null 2>&1";

// Whether a copy is there afterwards counts, not what the command says.
[[nodiscard]] int copyOut(const char* path, const char* copy) {
  static_cast<void>(sys::runLine(kCopy, {Word::path(path), Word::path(copy)}));
  if (exists(copy)) return 0;
  syslog(LOG_DEBUG, "copying %s failed", path);
  return -1;
}

[[nodiscard]] int copyAgentFile(const StateFile& file) {
  if (!missing(file.path)) return copyOut(file.path, file.copy);
  syslog(LOG_DEBUG, "%s missing", file.path);
  return 0;
}

[[nodiscard]] int gatherFiles() {
  if (copyOut(ConfigurationPath().text(), kConfigurationCopy) != 0) return -1;
  for (const StateFile& file : kAgentFiles) {
    if (copyAgentFile(file) != 0) return -1;
  }
  return copyOut(kPasswordFile.path, kPasswordFile.copy);
}

}  // namespace

// Once its files are together an archive counts as made: emptying the folder, packing and the event are tried, and what
// they come to changes no result.
int makeArchive(const char* timestamp, uint32_t source, const char* user) {
  char archive[PATH_MAX];
  if (snprintf(archive, sizeof archive, kArchive, timestamp) >= PATH_MAX) return -1;
  if (!makeStaging()) return -1;
  callSystem(kEmptyStaging);
  if (gatherFiles() != 0) return -1;
  static_cast<void>(sys::runLine(kZip, {Word::path(archive)}));
  callSystem(kEmptyStaging);
  logEvent(SHM_EVENT_STATE_SAVED, source, user);
  return 0;
}

}  // namespace kestrove

using namespace kestrove;

int __saveShmState(const char* timestamp, uint32_t source, const char* user) {
  if (!timestamp) return fail(SHM_EINVAL);
  StoreLock lock;
  return lock ? makeArchive(timestamp, source, user) : -1;
}
