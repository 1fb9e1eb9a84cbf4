// SPDX-License-Identifier: Apache-2.0
// The system state saved: the script of settings, then the archive.
#include <syslog.h>

#include "kestrove/state.h"
#include "kestrove/system.h"
#include "kestrove/text.h"
#include "state/archive.h"
#include "state/paths.h"
#include "state/script.h"
#include "store/lock.h"

namespace kestrove {
namespace {

constexpr char kRemoveArchives[] = "rm -f " STATE_DOCUMENTS "config*.zip > /dev/null 2>&1";
constexpr char kRemoveScripts[] = "rm -f " STATE_DOCUMENTS "state*.txt > /dev/null 2>&1";
constexpr char kTimestampFormat[] = "%Y%m%d-%H%M%S";
constexpr size_t kTimestampSize = 256;

[[nodiscard]] int reported(int result, const char* half) {
  if (result != 0) syslog(LOG_DEBUG, "%s failed", half);
  return result;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

// The lock is not given up in between: both halves are of one state. One half failing does not keep the other from
// being saved, and old files that cannot be removed keep none from it.
int saveSystemState(uint32_t source, const char* user) {
  StoreLock lock;
  if (!lock) return -1;
  callSystem(kRemoveArchives);
  callSystem(kRemoveScripts);
  char timestamp[kTimestampSize];
  getSystemTime(timestamp, nullptr, kTimestampFormat);
  int script = reported(writeScriptFile(timestamp), "__saveCliState");
  int archive = reported(makeArchive(timestamp, source, user), "__saveShmState");
  return script == 0 && archive == 0 ? 0 : -1;
}
