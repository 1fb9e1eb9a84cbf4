// SPDX-License-Identifier: Apache-2.0
#include "sandbox/files.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include "sandbox/report.h"
#include "sys/descriptor.h"

namespace kestrove::sandbox {

bool exists(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0;
}

bool isFolder(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string folderOf(const std::string& path) {
  size_t slash = path.rfind('/');
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string realPath(const std::string& path) {
  char* real = realpath(path.c_str(), nullptr);
  std::string result = real ? real : "";
  free(real);
  return result;
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(folder.c_str()), closedir);
  while (const dirent* entry = stream ? readdir(stream.get()) : nullptr) {
    std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  return names;
}

bool isBelow(const std::string& path, const std::string& folder) {
  return path == folder || path.starts_with(folder == "/" ? folder : folder + "/");
}

void makeFolder(const std::string& path, mode_t mode) {
  if (mkdir(path.c_str(), mode) == -1 && errno != EEXIST) giveUp("cannot make %s: %m", path.c_str());
}

void writeText(const std::string& path, const std::string& text, mode_t mode) {
  sys::Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode));
  if (!file || write(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    giveUp("cannot write %s: %m", path.c_str());
  }
}

bool copyFile(const std::string& from, const std::string& to, mode_t mode) {
  sys::Descriptor source(open(from.c_str(), O_RDONLY | O_CLOEXEC));
  if (!source) return false;
  unlink(to.c_str());
  sys::Descriptor target(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
  if (!target) giveUp("cannot write %s: %m", to.c_str());
  ssize_t sent = 0;
  while ((sent = sendfile(target.get(), source.get(), nullptr, 1 << 20)) > 0) continue;
  if (sent == -1) giveUp("cannot copy %s: %m", from.c_str());
  return true;
}

void link(const std::string& target, const std::string& path) {
  unlink(path.c_str());
  if (symlink(target.c_str(), path.c_str()) == -1) giveUp("cannot link %s: %m", path.c_str());
}

}  // namespace kestrove::sandbox
