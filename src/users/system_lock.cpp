// SPDX-License-Identifier: Apache-2.0
#include "users/system_lock.h"

#include <errno.h>
#include <fcntl.h>
#include <syslog.h>
#include <time.h>

namespace kestrove {
namespace {

constexpr char kLockFile[] = "/etc/.pwd.lock";
constexpr mode_t kLockFileMode = 0600;
constexpr int kTries = 5;
constexpr timespec kBetweenTries = {0, 200 * 1000 * 1000};

[[nodiscard]] bool ask(int file) {
  struct flock request = {};
  request.l_type = F_WRLCK;
  request.l_whence = SEEK_SET;
  return fcntl(file, F_SETLK, &request) == 0;
}

bool taken() { return errno == EAGAIN || errno == EACCES; }

[[nodiscard]] bool acquire(int file) {
  for (int tries = 1; !ask(file); ++tries) {
    if (!taken() || tries == kTries) return false;
    nanosleep(&kBetweenTries, nullptr);  // a signal only makes the next try come earlier
  }
  return true;
}

}  // namespace

SystemPasswordLock::SystemPasswordLock() : file_(open(kLockFile, O_WRONLY | O_CREAT | O_CLOEXEC, kLockFileMode)) {
  if (!file_ || !acquire(file_.get())) syslog(LOG_WARNING, "/etc/passwd cannot be locked: %m");
}

}  // namespace kestrove
