#include "sandbox/root.h"

#include <linux/mount.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "sandbox/files.h"
#include "sandbox/hostmounts.h"
#include "sandbox/report.h"
#include "sandbox/stage.h"

namespace kestrove::sandbox {
namespace {

constexpr const char* kDevices[] = {"null", "zero", "full", "random", "urandom", "tty"};

struct Link {
  const char* target;
  const char* path;
};
constexpr Link kDeviceLinks[] = {
    {"/proc/self/fd", "/dev/fd"},       {"/proc/self/fd/0", "/dev/stdin"}, {"/proc/self/fd/1", "/dev/stdout"},
    {"/proc/self/fd/2", "/dev/stderr"}, {"pts/ptmx", "/dev/ptmx"},
};

// The kernel's switches outside the network are the machine's own, whoever is root here.
constexpr const char* kReadOnly[] = {"/proc/sys", "/proc/sysrq-trigger", "/proc/irq", "/proc/bus"};
constexpr const char* kStillWritable = "/proc/sys/net";

void bind(const std::string& from, const std::string& to, unsigned long flags = 0) {
  if (mount(from.c_str(), to.c_str(), nullptr, MS_BIND | flags, nullptr) == -1) {
    giveUp("cannot mount %s: %m", from.c_str());
  }
}

void mountOverlay() {
  const std::string layers = "lowerdir=/,upperdir=" + kUpper + ",workdir=" + kStage + "/work";
  for (const char* extra : {"", ",userxattr"}) {
    if (mount("kestrove", kRoot.c_str(), "overlay", 0, (layers + extra).c_str()) == 0) return;
  }
  giveUp("no overlay file system: %m");
}

void mountDevices() {
  for (const char* device : kDevices) {
    std::string node = kStage + "/dev/" + device;
    writeText(node, "", 0666);
    bind("/dev/" + nameOf(device), node);
  }
  for (const Link& row : kDeviceLinks) link(row.target, kStage + row.path);
  for (const char* folder : {"/dev/pts", "/dev/shm"}) makeFolder(kStage + folder, 0755);
  chmod((kStage + "/dev/shm").c_str(), 01777);
  std::string terminals = kStage + "/dev/pts";
  if (mount("devpts", terminals.c_str(), "devpts", MS_NOSUID | MS_NOEXEC, "newinstance,ptmxmode=0666,mode=0620") ==
      -1) {
    giveUp("no terminals: %m");
  }
}

void mountKernel() {
  if (mount("proc", (kRoot + "/proc").c_str(), "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) == -1) {
    giveUp("no /proc of our own: %m");
  }
  bind(kRoot + kStillWritable, kRoot + kStillWritable);
  for (const char* path : kReadOnly) {
    std::string target = kRoot + path;
    if (!exists(target)) continue;
    bind(target, target, MS_REC);
    mount(nullptr, target.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY | MS_NOSUID | MS_NODEV | MS_NOEXEC,
          nullptr);
  }
  // A machine that hides parts of its own /sys gives no second one; nothing of the appliance depends on it.
  mount("sysfs", (kRoot + "/sys").c_str(), "sysfs", MS_RDONLY | MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr);
}

void mountOwnFolders() {
  for (const char* folder : {"/run", "/tmp", "/dev"}) bind(kStage + folder, kRoot + folder, MS_REC);
}

void mountState(const std::string& state) {
  if (state.empty()) return;
  makeFolder(state + "/config", 0755);
  makeFolder(state + "/log", 0755);
  bind(state + "/config", kRoot + "/etc/config");
  bind(state + "/log", kRoot + "/var/log/kestrove");
}

}  // namespace

void mountRoot(const Options& options) {
  mountOverlay();
  mountDevices();
  mountOwnFolders();
  mountHostFileSystems();
  mountState(options.state);
  mountKernel();
}

void enterRoot() {
  if (chdir(kRoot.c_str()) == -1) giveUp("%s: %m", kRoot.c_str());
  if (syscall(SYS_pivot_root, ".", ".") == -1) giveUp("cannot change the root: %m");
  if (umount2(".", MNT_DETACH) == -1) giveUp("cannot leave the machine's root: %m");
  if (chdir("/") == -1) giveUp("/: %m");
}

}  // namespace kestrove::sandbox
