// SPDX-License-Identifier: Apache-2.0
#include "sandbox/devices.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <string>

#include "sandbox/files.h"
#include "sandbox/mounts.h"
#include "sandbox/report.h"
#include "sandbox/stage.h"

namespace kestrove::sandbox {
namespace {

struct Device {
  const char* path;
  unsigned major;
  unsigned minor;
};
constexpr Device kDevices[] = {
    {"/dev/null", 1, 3},   {"/dev/zero", 1, 5},    {"/dev/full", 1, 7},
    {"/dev/random", 1, 8}, {"/dev/urandom", 1, 9}, {"/dev/tty", 5, 0},
};

struct Link {
  const char* target;
  const char* path;
};
constexpr Link kLinks[] = {
    {"/proc/self/fd", "/dev/fd"},       {"/proc/self/fd/0", "/dev/stdin"}, {"/proc/self/fd/1", "/dev/stdout"},
    {"/proc/self/fd/2", "/dev/stderr"}, {"pts/ptmx", "/dev/ptmx"},
};

// Nodes of our own, so that a changed mode stays inside. Root of a user namespace makes none and gets the machine's,
// whose mode it cannot change.
void makeDevice(const Device& device) {
  const std::string node = kStage + device.path;
  if (mknod(node.c_str(), S_IFCHR | 0666, makedev(device.major, device.minor)) == 0) {
    chmod(node.c_str(), 0666);
    return;
  }
  writeText(node, "", 0666);
  bind(device.path, node);
}

void mountTerminals() {
  const std::string terminals = kStage + "/dev/pts";
  makeFolder(terminals, 0755);
  const char* options = "newinstance,ptmxmode=0666,mode=0620";
  if (mount("devpts", terminals.c_str(), "devpts", MS_NOSUID | MS_NOEXEC, options) == -1) giveUp("no terminals: %m");
}

}  // namespace

void makeDevices() {
  for (const Device& device : kDevices) makeDevice(device);
  for (const Link& row : kLinks) link(row.target, kStage + row.path);
  mountTerminals();
  makeFolder(kStage + "/dev/shm", 0777);
  chmod((kStage + "/dev/shm").c_str(), 01777);
}

}  // namespace kestrove::sandbox
