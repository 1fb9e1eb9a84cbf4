// SPDX-License-Identifier: Apache-2.0
#include "sandbox/stage.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "sandbox/files.h"
#include "sandbox/report.h"

namespace kestrove::sandbox {
namespace {

constexpr const char* kOwnFolders[] = {"/run", "/tmp", "/dev", "/proc", "/sys"};

// Which of the two an overlay heeds depends on who mounts it. A memory file system that keeps neither shows the
// machine's files, if there are any.
constexpr const char* kEmptyMarks[] = {"trusted.overlay.opaque", "user.overlay.opaque"};

std::string onStage(const std::string& real) {
  if (isOwn(real)) return kStage + real;
  return real == "/" ? kUpper : kUpper + real;
}

// The path with every link of its existing part followed.
std::string followLinks(const std::string& path) {
  std::string real = realPath(path);
  if (!real.empty() || path == "/") return real;
  std::string folder = followLinks(folderOf(path));
  return (folder == "/" ? "" : folder) + "/" + nameOf(path);
}

void copyOwner(const std::string& real, const std::string& staged, mode_t mode) {
  struct stat status;
  bool known = stat(real.c_str(), &status) == 0;
  if (known) (void)!chown(staged.c_str(), status.st_uid, status.st_gid);  // refused to an ordinary user
  chmod(staged.c_str(), known ? status.st_mode & 07777 : mode);
}

void makeStaged(const std::string& real, mode_t mode) {
  std::string staged = onStage(real);
  if (exists(staged)) return;
  makeStaged(folderOf(real), 0755);
  makeFolder(staged, mode);
  copyOwner(real, staged, mode);
}

}  // namespace

void markEmpty(const std::string& staged) {
  for (const char* mark : kEmptyMarks) setxattr(staged.c_str(), mark, "y", 1, 0);
}

bool markedEmpty(const std::string& staged) {
  char value = 0;
  for (const char* mark : kEmptyMarks) {
    if (getxattr(staged.c_str(), mark, &value, 1) == 1) return true;
  }
  return false;
}

bool isOwn(const std::string& path) {
  for (const char* own : kOwnFolders) {
    if (isBelow(path, own)) return true;
  }
  return false;
}

void makeStage() {
  if (mount("kestrove", kStage.c_str(), "tmpfs", 0, "mode=0755") == -1) giveUp("no memory file system: %m");
  for (const char* folder : {"/upper", "/work", "/root", "/run", "/dev", "/tmp"}) makeFolder(kStage + folder, 0755);
  if (mount(kRoot.c_str(), kRoot.c_str(), nullptr, MS_BIND, nullptr) == -1) giveUp("cannot make a root: %m");
  chmod((kStage + "/tmp").c_str(), 01777);
}

std::string placeFolder(const std::string& path, mode_t mode) {
  std::string real = followLinks(path);
  makeStaged(real, mode);
  return onStage(real);
}

std::string place(const std::string& path) { return placeFolder(folderOf(path)) + "/" + nameOf(path); }

}  // namespace kestrove::sandbox
