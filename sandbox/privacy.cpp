// SPDX-License-Identifier: Apache-2.0
#include "sandbox/privacy.h"

#include <errno.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "sandbox/files.h"
#include "sandbox/report.h"
#include "sys/descriptor.h"

namespace kestrove::sandbox {
namespace {

bool makePrivate() { return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0; }

// Joining the namespace in which a process already is has one effect: its root is the namespace's again.
void leaveChroot() {
  sys::Descriptor self(static_cast<int>(syscall(SYS_pidfd_open, getpid(), 0)));
  if (!self || setns(self.get(), CLONE_NEWNS) == -1) giveUp("cannot leave the chroot: %m");
}

// A copy of the folder's mounts, which is a file system of its own, takes the place of everything else.
void makeRoot(const sys::Descriptor& folder) {
  const unsigned flags = OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC | AT_RECURSIVE | AT_EMPTY_PATH;
  sys::Descriptor copy(open_tree(folder.get(), "", flags));
  if (!copy) giveUp("cannot copy the chroot's mounts: %m");
  if (move_mount(copy.get(), "", folder.get(), "", MOVE_MOUNT_F_EMPTY_PATH | MOVE_MOUNT_T_EMPTY_PATH) == -1) {
    giveUp("cannot mount the chroot: %m");
  }
  if (fchdir(copy.get()) == -1 || syscall(SYS_pivot_root, ".", ".") == -1 || umount2(".", MNT_DETACH) == -1 ||
      chdir("/") == -1) {
    giveUp("cannot make the chroot a root: %m");
  }
}

// A bare chroot has no /proc, of which the launcher needs its own entries.
void ensureProc() {
  if (!exists("/proc/self") && mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) == -1) {
    giveUp("no /proc: %m");
  }
}

}  // namespace

void takeMountsApart() {
  if (!makePrivate()) {
    sys::Descriptor folder(open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (errno != EINVAL || !folder) giveUp("cannot detach the mounts: %m");
    leaveChroot();
    if (!makePrivate()) giveUp("cannot detach the mounts: %m");
    makeRoot(folder);
  }
  ensureProc();
}

}  // namespace kestrove::sandbox
