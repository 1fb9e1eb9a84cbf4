#include "sandbox/hostmounts.h"

#include <fcntl.h>
#include <linux/mount.h>
#include <stdio.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "sandbox/files.h"
#include "sandbox/stage.h"
#include "sys/stream.h"

namespace kestrove::sandbox {
namespace {

constexpr const char* kReplaced[] = {"/proc", "/sys", "/dev", "/run", "/tmp"};

// The kernel writes blanks and the like as a backslash and three octal digits.
std::string unescape(const char* text) {
  std::string result;
  for (const char* c = text; *c; ++c) {
    unsigned code = 0;
    if (*c == '\\' && sscanf(c + 1, "%3o", &code) == 1) {
      result += static_cast<char>(code);
      c += 3;
    } else {
      result += *c;
    }
  }
  return result;
}

bool replaced(const std::string& path) {
  for (const char* folder : kReplaced) {
    if (isBelow(path, folder)) return true;
  }
  return false;
}

// The topmost mount points; what is mounted below them comes with them.
std::vector<std::string> hostMounts() {
  std::vector<std::string> found;
  sys::Stream table(fopen("/proc/self/mountinfo", "re"));
  char line[4096];
  char point[4096];
  while (table && fgets(line, sizeof line, table.get())) {
    if (sscanf(line, "%*d %*d %*s %*s %4095s", point) != 1) continue;
    std::string path = unescape(point);
    if (path == "/" || replaced(path)) continue;
    if (!found.empty() && isBelow(path, found.back())) continue;
    found.push_back(path);
  }
  return found;
}

void makeReadOnly(const std::string& path) {
  mount_attr attributes = {};
  attributes.attr_set = MOUNT_ATTR_RDONLY;
  if (syscall(SYS_mount_setattr, AT_FDCWD, path.c_str(), AT_RECURSIVE, &attributes, sizeof attributes) == 0) return;
  mount(nullptr, path.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr);
}

}  // namespace

void mountHostFileSystems() {
  for (const std::string& path : hostMounts()) {
    std::string target = kRoot + path;
    if (!exists(target)) continue;
    if (mount(path.c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0) makeReadOnly(target);
  }
}

}  // namespace kestrove::sandbox
