// SPDX-License-Identifier: Apache-2.0
#include "sandbox/root.h"

#include <string.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <string>

#include "sandbox/devices.h"
#include "sandbox/files.h"
#include "sandbox/layers.h"
#include "sandbox/mounts.h"
#include "sandbox/report.h"
#include "sandbox/stage.h"

namespace kestrove::sandbox {
namespace {

constexpr unsigned long kKernelFlags = MS_NOSUID | MS_NODEV | MS_NOEXEC;

// The kernel's switches outside the network are the machine's own, whoever is root here.
constexpr const char* kFrozen[] = {"/proc/sys", "/proc/sysrq-trigger", "/proc/irq", "/proc/bus", "/sys"};
constexpr const char* kStillWritable = "/proc/sys/net";

// Unlike makeReadOnly this leaves what is mounted below as it is.
void freeze(const std::string& path) {
  if (!exists(path)) return;
  bind(path, path);
  if (mount(nullptr, path.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY | kKernelFlags, nullptr) == -1) {
    giveUp("cannot freeze %s: %m", path.c_str());
  }
}

void mountKernel() {
  if (mount("proc", (kRoot + "/proc").c_str(), "proc", kKernelFlags, nullptr) == -1) {
    giveUp("no /proc of our own: %m");
  }
  // A machine that hides parts of its own /sys gives no second one; nothing of the appliance depends on it.
  mount("sysfs", (kRoot + "/sys").c_str(), "sysfs", kKernelFlags, nullptr);
  bind(kRoot + kStillWritable, kRoot + kStillWritable);
  for (const char* path : kFrozen) freeze(kRoot + path);
}

// What lies below /tmp or /run would be covered by the appliance's own, a build for one: the topmost folder, or the
// file itself, stays visible read-only.
void showCovered(const std::string& path) {
  for (const char* own : {"/tmp/", "/run/"}) {
    if (!path.starts_with(own)) continue;
    const std::string top = path.substr(0, path.find('/', strlen(own)));
    if (!exists(top) || exists(kStage + top)) return;
    isFolder(top) ? makeFolder(kStage + top, 0755) : writeText(kStage + top, "", 0644);
    bind(top, kStage + top);
    makeReadOnly(kStage + top);
  }
}

void mountOwnFolders(const Options& options) {
  for (const char* needed : {".", options.program.c_str(), static_cast<const char*>(options.command[0])}) {
    showCovered(realPath(needed));
  }
  for (const std::string& path : options.shown) showCovered(path);
  showCovered(options.shared);
  for (const char* folder : {"/run", "/tmp", "/dev"}) bind(kStage + folder, kRoot + folder);
}

void mountState(const std::string& state) {
  if (state.empty()) return;
  makeFolder(state + "/config", 0755);
  makeFolder(state + "/log", 0755);
  bind(state + "/config", kRoot + "/etc/config");
  bind(state + "/log", kRoot + "/var/log/kestrove");
}

void mountShared(const std::string& folder) {
  if (!folder.empty()) bind(folder, kRoot + folder);
}

}  // namespace

void mountRoot(const Options& options) {
  mountLayers(options.overlay);
  makeDevices();
  mountOwnFolders(options);
  mountState(options.state);
  mountShared(options.shared);
  mountKernel();
}

void enterRoot() {
  if (chdir(kRoot.c_str()) == -1) giveUp("%s: %m", kRoot.c_str());
  if (syscall(SYS_pivot_root, ".", ".") == -1) giveUp("cannot change the root: %m");
  if (umount2(".", MNT_DETACH) == -1) giveUp("cannot leave the machine's root: %m");
  if (chdir("/") == -1) giveUp("/: %m");
}

}  // namespace kestrove::sandbox
