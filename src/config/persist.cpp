// SPDX-License-Identifier: Apache-2.0
// The exported loads and saves: under which lock, from which path, and what a failure leaves.
#include <errno.h>
#include <fcntl.h>
#include <syslog.h>

#include "config/reader.h"
#include "config/writer.h"
#include "kestrove/persistence.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/mode.h"
#include "store/text.h"
#include "sys/descriptor.h"
#include "sys/folder.h"
#include "sys/probe.h"
#include "sys/repeated.h"
#include "sys/replace.h"

namespace kestrove {
namespace {

// Rows that are loaded are only stored: no save into the file that is being read, no event, no kernel change, no
// signal.
class LoadingMode {
 public:
  LoadingMode() : before_(shm->operationalState) { shm->operationalState = SHM_STATE_CONFIGURATION; }
  // Where somebody has set another state meanwhile, that one stands.
  ~LoadingMode() {
    if (configurationMode()) shm->operationalState = before_;
  }
  LoadingMode(const LoadingMode&) = delete;
  LoadingMode& operator=(const LoadingMode&) = delete;

 private:
  uint32_t before_;
};

// The file that was there stands when this fails. The code tells of it, also where the result does not.
[[nodiscard]] int reportLostSave(const char* path, int result) {
  int error = errno;
  syslog(LOG_ERR, "Error writing %s: %m", path);
  errno = error;
  fail(SHM_EIO);
  return result;
}

// From reading the store to the rename nobody else saves, also where the file lock could not be had or a caller's own
// nesting has dropped it: whoever saves last has written the newest store.
[[nodiscard]] int saveTo(const char* path) {
  sys::FolderLock ordered(path);
  sys::Replacement file(path);
  if (!file) return fail(SHM_ESYSTEM);
  sys::TextWriter out(file);
  int result = writeConfigFile(out);
  if (result != 0 || !out.flush() || !file.commit()) return reportLostSave(path, result);
  return 0;
}

[[nodiscard]] int replaceConfigFile() {
  char path[sizeof shm->config.configFileName + 1];
  copyField(path, sizeof path, shm->config.configFileName);
  KESTROVE_PROBE1(save_begin, &path[0]);
  int result = saveTo(path);
  KESTROVE_PROBE1(save_end, result);
  return result;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int load_shared_memory(const char* path, ...) {
  if (!path) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  sys::Descriptor file(sys::repeated([path] { return open(path, O_RDONLY | O_CLOEXEC); }));
  if (!file) {
    int error = errno;
    syslog(LOG_ERR, "Error opening %s: %m", path);
    return error == ENOENT ? -2 : -1;
  }
  LoadingMode mode;
  if (!readConfigFile(path, file.get())) shm_errno = SHM_ESYSTEM;
  return 0;
}

int write_shared_memory(void) {
  StoreLock lock;
  if (!lock) return -1;
  return replaceConfigFile();
}

int save_shared_memory(void) {
  StoreLock lock;
  if (!lock) return -1;
  return configurationMode() ? 0 : replaceConfigFile();
}
