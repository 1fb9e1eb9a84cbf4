// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/settings/private_place.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/capability.h>
#include <linux/mount.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "tools/ctl/session.h"
#include "tools/ctl/settings/scratch.h"

namespace ctl {
namespace {

constexpr char kLockFile[] = "/var/lock/shm";
constexpr char kSystemLog[] = "/dev/log";

// What no namespace holds back: the clock, the power, the kernel's modules, the hardware.
constexpr int kReachingOut[] = {CAP_SYS_BOOT, CAP_SYS_TIME, CAP_SYS_MODULE, CAP_SYS_RAWIO};

[[noreturn]] void fail(const char* what) {
  throw systemRefusal(std::string("a copy of the appliance: ") + what, errno);
}

void writeFile(const char* path, const std::string& text) {
  const int fd = open(path, O_WRONLY | O_CLOEXEC);
  if (fd == -1) fail(path);
  const bool written = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  close(fd);
  if (!written) fail(path);
}

void becomeRoot(uid_t user, gid_t group) {
  writeFile("/proc/self/setgroups", "deny");
  writeFile("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
  writeFile("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
}

void makeReadOnly() {
  if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) fail("mounts of its own");
  mount_attr attributes = {};
  attributes.attr_set = MOUNT_ATTR_RDONLY;
  if (syscall(SYS_mount_setattr, AT_FDCWD, "/", AT_RECURSIVE, &attributes, sizeof attributes) != 0) {
    fail("read-only file systems");
  }
}

void giveUpPrivileges() {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct sets[2] = {};
  if (syscall(SYS_capget, &header, sets) != 0) fail("privileges");
  for (const int capability : kReachingOut) {
    prctl(PR_CAPBSET_DROP, capability, 0, 0, 0);  // refused where it is not held: just as well
    const uint32_t kept = ~(1u << capability);
    sets[0].effective &= kept;
    sets[0].permitted &= kept;
    sets[0].inheritable &= kept;
  }
  if (syscall(SYS_capset, &header, sets) != 0) fail("privileges");
}

// The system log is the appliance's, and what the library prints is not the command's.
void goSilent() {
  closelog();
  if (access(kSystemLog, F_OK) == 0) mount("/dev/null", kSystemLog, nullptr, MS_BIND, nullptr);
  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (null == -1) fail("/dev/null");
  dup2(null, STDIN_FILENO);
  dup2(null, STDOUT_FILENO);
  close(null);
}

// Of this process namespace alone; where it may not be mounted the other one stays, read-only.
void showOwnProcesses() { mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr); }

bool same(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

}  // namespace

PrivatePlace::PrivatePlace() : user_(geteuid()), group_(getegid()) {
  struct stat lock;
  DIR* folder = stat(kLockFile, &lock) == 0 ? opendir("/proc/self/fd") : nullptr;
  if (!folder) return;
  while (const dirent* entry = readdir(folder)) {
    const int fd = atoi(entry->d_name);
    struct stat facts;
    if (fd > STDERR_FILENO && fstat(fd, &facts) == 0 && same(facts, lock)) lockFiles_.push_back(fd);
  }
  closedir(folder);
}

void PrivatePlace::enter(bool ownUserNamespace) const {
  if (ownUserNamespace) becomeRoot(user_, group_);
  makeReadOnly();
  layScratch();
  showOwnProcesses();
  takePrivateLockFile();
  goSilent();
  giveUpPrivileges();
}

// The library keeps its descriptor for good: the private file takes the number of the real one.
void PrivatePlace::takePrivateLockFile() const {
  const int fd = open(kLockFile, O_RDWR | O_CREAT | O_CLOEXEC, 0774);
  if (fd == -1) fail(kLockFile);
  for (const int number : lockFiles_) {
    if (dup3(fd, number, O_CLOEXEC) == -1) fail(kLockFile);
  }
  close(fd);
}

}  // namespace ctl
