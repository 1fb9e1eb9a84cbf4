// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/watch/new_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "tools/ctl/session.h"

namespace ctl {

NewFile::NewFile(std::string path, mode_t mode) : path_(std::move(path)), name_(path_ + ".XXXXXX") {
  struct stat facts;
  if (stat(path_.c_str(), &facts) == 0 && !S_ISREG(facts.st_mode)) throw Refusal(kSystem, path_ + ": no plain file");
  fd_ = mkostemp(name_.data(), O_CLOEXEC);
  if (fd_ == -1) throw systemRefusal(path_, errno);
  if (fchmod(fd_, mode) == 0) return;
  const int error = errno;
  close(fd_);
  unlink(name_.c_str());
  throw systemRefusal(path_, error);
}

NewFile::~NewFile() {
  close(fd_);
  if (!name_.empty()) unlink(name_.c_str());
}

void NewFile::write(const std::string& text) {
  for (size_t at = 0; at < text.size();) {
    const ssize_t written = ::write(fd_, text.data() + at, text.size() - at);
    if (written == -1 && errno == EINTR) continue;
    if (written == -1) throw systemRefusal(path_, errno);
    at += static_cast<size_t>(written);
  }
}

void NewFile::putInPlace() {
  if (fsync(fd_) != 0 || rename(name_.c_str(), path_.c_str()) != 0) throw systemRefusal(path_, errno);
  name_.clear();
}

}  // namespace ctl
