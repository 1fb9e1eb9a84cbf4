// SPDX-License-Identifier: Apache-2.0
#include "sys/folder.h"

#include <fcntl.h>
#include <limits.h>
#include <string.h>
#include <sys/file.h>

#include "sys/repeated.h"

namespace kestrove::sys {

const char* lastComponent(const char* path) {
  const char* slash = strrchr(path, '/');
  return slash ? slash + 1 : path;
}

Descriptor openFolderOf(const char* path) {
  char folder[PATH_MAX] = ".";
  auto length = static_cast<size_t>(lastComponent(path) - path);
  if (length >= sizeof folder) length = 0;
  if (length > 0) {
    memcpy(folder, path, length);
    folder[length] = '\0';
  }
  return Descriptor(repeated([&] { return ::open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
}

FolderLock::FolderLock(const char* path) : folder_(openFolderOf(path)) {
  if (folder_) repeated([this] { return flock(folder_.get(), LOCK_EX); });
}

}  // namespace kestrove::sys
