// SPDX-License-Identifier: Apache-2.0
#include "tools/api/folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <memory>

#include "tools/common/lock_wait.h"
#include "tools/common/write_whole.h"
#include "tools/ctl/session.h"

namespace api {
namespace {

using kestrove::sys::Descriptor;

constexpr size_t kLongest = 1 << 20;
constexpr int kPauseMicroseconds = 5000;

}  // namespace

Folder::Folder(const std::string& path) : path_(path) {
  if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) throw ctl::systemRefusal(path, errno);
  struct stat facts;
  if (lstat(path.c_str(), &facts) != 0) throw ctl::systemRefusal(path, errno);
  if (S_ISDIR(facts.st_mode) && facts.st_uid == geteuid() && (facts.st_mode & 077) == 0) return;
  throw ctl::Refusal(ctl::kNotPermitted, "not permitted: " + path + ": not a folder for this user alone");
}

std::optional<std::string> Folder::read(const std::string& name) const {
  const Descriptor file(open(pathOf(name).c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  if (!file) return std::nullopt;
  std::string text;
  char buffer[4096];
  for (ssize_t length; text.size() < kLongest && (length = ::read(file.get(), buffer, sizeof buffer)) != 0;) {
    if (length < 0 && errno != EINTR) return std::nullopt;
    if (length > 0) text.append(buffer, static_cast<size_t>(length));
  }
  return text;
}

void Folder::write(const std::string& name, const std::string& text) const {
  const std::string fresh = pathOf(name) + ".new." + std::to_string(getpid());
  Descriptor file(open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file) throw ctl::systemRefusal(pathOf(name), errno);
  if (tools::writeWhole(file.get(), text) && rename(fresh.c_str(), pathOf(name).c_str()) == 0) return;
  const int error = errno;
  unlink(fresh.c_str());
  throw ctl::systemRefusal(pathOf(name), error);
}

void Folder::remove(const std::string& name) const { unlink(pathOf(name).c_str()); }

std::vector<std::string> Folder::names() const {
  std::vector<std::string> found;
  std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(path_.c_str()), closedir);
  while (const dirent* entry = folder ? readdir(folder.get()) : nullptr) {
    if (entry->d_name[0] != '.') found.push_back(entry->d_name);
  }
  return found;
}

double Folder::age(const std::string& name) const {
  struct stat facts;
  struct timespec now;
  if (stat(pathOf(name).c_str(), &facts) != 0 || clock_gettime(CLOCK_REALTIME, &now) != 0) return -1;
  const double seconds = static_cast<double>(now.tv_sec - facts.st_mtim.tv_sec) +
                         static_cast<double>(now.tv_nsec - facts.st_mtim.tv_nsec) / 1e9;
  return seconds < 0 ? 0 : seconds;
}

void Folder::touch(const std::string& name) const { utimensat(AT_FDCWD, pathOf(name).c_str(), nullptr, 0); }

Descriptor Folder::lock(double seconds) const {
  Descriptor file(open(pathOf(".lock").c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file) throw ctl::systemRefusal(pathOf(".lock"), errno);
  const double most = tools::waitLeft(seconds);
  for (double waited = 0; flock(file.get(), LOCK_EX | LOCK_NB) != 0; waited += kPauseMicroseconds / 1e6) {
    if (errno != EWOULDBLOCK && errno != EINTR) throw ctl::systemRefusal(pathOf(".lock"), errno);
    if (waited >= most) throw ctl::Refusal(ctl::kLocked, path_ + ": others are at work there");
    usleep(kPauseMicroseconds);
    tools::countWait(kPauseMicroseconds / 1e6);
  }
  return file;
}

}  // namespace api
