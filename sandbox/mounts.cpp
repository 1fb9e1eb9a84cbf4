// SPDX-License-Identifier: Apache-2.0
#include "sandbox/mounts.h"

#include <fcntl.h>
#include <linux/mount.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "sandbox/report.h"

namespace kestrove::sandbox {

void bind(const std::string& from, const std::string& to) {
  if (mount(from.c_str(), to.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == -1) {
    giveUp("cannot mount %s: %m", from.c_str());
  }
}

// A kernel before 5.12 knows the second way only, which leaves out what is mounted below.
void makeReadOnly(const std::string& path) {
  mount_attr attributes = {};
  attributes.attr_set = MOUNT_ATTR_RDONLY;
  if (syscall(SYS_mount_setattr, AT_FDCWD, path.c_str(), AT_RECURSIVE, &attributes, sizeof attributes) == 0) return;
  if (mount(nullptr, path.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) == 0) return;
  giveUp("cannot make %s read-only: %m", path.c_str());  // the machine's own files would lie open
}

}  // namespace kestrove::sandbox
