// SPDX-License-Identifier: Apache-2.0
#include "tools/init/kept_copy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "tools/common/write_whole.h"

namespace init {
namespace {

constexpr int kMostCopies = 9;  // the last one is written again and again

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

bool exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

std::string nameFor(const std::string& path, const std::string& content) {
  std::string name = path + ".damaged";
  for (int number = 2; number <= kMostCopies && exists(name) && contentOf(name) != content; ++number) {
    name = path + ".damaged." + std::to_string(number);
  }
  return name;
}

// Under another name first: a copy that is there is whole.
int writeCopy(const std::string& name, const std::string& content, mode_t mode) {
  const std::string unfinished = name + ".new";
  unlink(unfinished.c_str());
  const int fd = open(unfinished.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (fd == -1) return errno;
  int error = tools::writeWhole(fd, content) && fsync(fd) == 0 ? 0 : errno;
  close(fd);
  if (error == 0 && rename(unfinished.c_str(), name.c_str()) != 0) error = errno;
  if (error != 0) unlink(unfinished.c_str());
  return error;
}

}  // namespace

int keepCopy(const std::string& path, std::string& kept) {
  struct stat facts;
  if (stat(path.c_str(), &facts) != 0) return errno;
  const std::string content = contentOf(path);
  kept = nameFor(path, content);
  if (exists(kept) && contentOf(kept) == content) return 0;
  return writeCopy(kept, content, facts.st_mode & 07777);
}

}  // namespace init
