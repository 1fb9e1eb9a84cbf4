// SPDX-License-Identifier: Apache-2.0
// The system state put back: unpacked in the staging folder, then copied file by file.
#include <stdio.h>
#include <syslog.h>

#include "kestrove/codes.h"
#include "kestrove/events.h"
#include "kestrove/state.h"
#include "kestrove/system.h"
#include "state/paths.h"
#include "state/staging.h"
#include "store/segment.h"
#include "sys/command.h"

namespace kestrove {
namespace {

using sys::Word;

constexpr char kUnpack[] = "/usr/bin/unzip -o -qq " STATE_DOCUMENTS "config*.zip -d " STATE_STAGING;
constexpr size_t kLongestLine = 512;

[[nodiscard]] int failed(const char* line) {
  syslog(LOG_ERR, "Failed: %s", line);
  return -1;
}

[[nodiscard]] int unpack() {
  if (callSystem(kUnpack) != 0) return failed(kUnpack);
  syslog(LOG_DEBUG, "%s", kUnpack);
  return 0;
}

[[nodiscard]] int copyBack(const char* copy, const char* path) {
  if (sys::runLine(kCopy, {Word::path(copy), Word::path(path)}) == 0) return 0;
  char line[kLongestLine];
  snprintf(line, sizeof line, kCopy, copy, path);
  return failed(line);
}

[[nodiscard]] int copyAgentFileBack(const StateFile& file) {
  if (!missing(file.copy)) return copyBack(file.copy, file.path);
  syslog(LOG_DEBUG, "%s missing", file.path);
  return 0;
}

[[nodiscard]] int putFilesBack() {
  if (!exists(kConfigurationCopy)) return -1;
  if (copyBack(kConfigurationCopy, ConfigurationPath().text()) != 0) return -1;
  for (const StateFile& file : kAgentFiles) {
    if (copyAgentFileBack(file) != 0) return -1;
  }
  return exists(kPasswordFile.copy) ? copyBack(kPasswordFile.copy, kPasswordFile.path) : -1;
}

// The state is back already: a folder that keeps its copies is told of in the log, no more.
void emptyStaging() {
  if (callSystem(kEmptyStaging) != 0) static_cast<void>(failed(kEmptyStaging));
  syslog(LOG_DEBUG, "%s", kEmptyStaging);
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int loadSystemState(uint32_t source, const char* user) {
  if (!attachStore()) return -1;
  if (!makeStaging() || !dropOldCopies()) return -1;
  if (unpack() != 0 || !copiesAreRegular() || putFilesBack() != 0) return -1;
  emptyStaging();
  logEvent(SHM_EVENT_STATE_RESTORED, source, user);  // restored all the same when it cannot be logged
  return 0;
}
