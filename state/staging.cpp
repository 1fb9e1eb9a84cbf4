#include "state/staging.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "kestrove/system.h"
#include "state/paths.h"

namespace kestrove {
namespace {

constexpr mode_t kPrivate = 0700;

}  // namespace

void makeStaging() {
  if (mkdir(kStagingDirectory, kPrivate) != 0) {
    fchmodat(AT_FDCWD, kStagingDirectory, kPrivate, AT_SYMLINK_NOFOLLOW);
  }
  callSystem(kMakeStaging);
}

bool exists(const char* path) { return access(path, F_OK) == 0; }

bool missing(const char* path) { return !exists(path) && (errno == ENOENT || errno == ENOTDIR); }

}  // namespace kestrove
