// SPDX-License-Identifier: Apache-2.0
#include "state/staging.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include "kestrove/system.h"
#include "state/paths.h"
#include "sys/descriptor.h"

namespace kestrove {
namespace {

constexpr char kFolder[] = STATE_STAGING_FOLDER;  // without a slash behind it, which would lead through a link
constexpr mode_t kPrivate = 0700;

constexpr const char* kCopies[] = {kConfigurationCopy, kAgentFiles[0].copy, kAgentFiles[1].copy, kPasswordFile.copy};

// One that is not there yet, as with its parent missing, is left to the command.
[[nodiscard]] bool privateFolder() {
  mkdir(kFolder, kPrivate);
  sys::Descriptor folder(open(kFolder, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!folder) return errno == ENOENT;
  return fchmod(folder.get(), kPrivate) == 0;
}

[[nodiscard]] bool regularOrMissing(const char* path) {
  struct stat status;
  return lstat(path, &status) == 0 ? S_ISREG(status.st_mode) : errno == ENOENT;
}

}  // namespace

bool makeStaging() {
  if (!privateFolder()) {
    syslog(LOG_ERR, "%s cannot be used: %m", kFolder);
    return false;
  }
  callSystem(kMakeStaging);  // fails whenever the folder is there; without one every copy fails and says so
  return true;
}

bool dropOldCopies() {
  for (const char* copy : kCopies) {
    if (unlink(copy) == 0 || missing(copy)) continue;
    syslog(LOG_ERR, "%s cannot be removed: %m", copy);
    return false;
  }
  return true;
}

bool copiesAreRegular() {
  for (const char* copy : kCopies) {
    if (regularOrMissing(copy)) continue;
    syslog(LOG_ERR, "%s is no regular file", copy);
    return false;
  }
  return true;
}

bool exists(const char* path) { return access(path, F_OK) == 0; }

bool missing(const char* path) { return !exists(path) && (errno == ENOENT || errno == ENOTDIR); }

}  // namespace kestrove
