// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/home.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cstdlib>
#include <memory>

#include "tools/common/lock_wait.h"
#include "tools/common/write_whole.h"
#include "tools/ctl/session.h"

namespace ctl {
namespace {

using kestrove::sys::Descriptor;

constexpr char kFolder[] = "/var/lib/kestrove";
constexpr char kLock[] = "lock";
constexpr mode_t kOwnersAlone = 0700;
constexpr mode_t kOwnersFile = 0600;
constexpr int kPauseMicroseconds = 10000;

Descriptor openFolder(const std::string& path) {
  return Descriptor(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

void refuseForeign(int folder, const std::string& path) {
  struct stat facts;
  if (fstat(folder, &facts) != 0) throw systemRefusal(path, errno);
  if (facts.st_uid != geteuid()) throw Refusal(kNotPermitted, "not permitted: " + path + ": belongs to somebody else");
  if ((facts.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    throw Refusal(kNotPermitted, "not permitted: " + path + ": others may write there");
  }
}

std::string readWhole(int fd, const std::string& path) {
  std::string text;
  char buffer[65536];
  ssize_t length;
  while ((length = read(fd, buffer, sizeof buffer)) != 0) {
    if (length < 0 && errno != EINTR) throw systemRefusal(path, errno);
    if (length > 0) text.append(buffer, static_cast<size_t>(length));
  }
  return text;
}

Descriptor openLock(const Home& home) {
  Descriptor file(openat(home.folder(), kLock, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kOwnersFile));
  if (!file) throw systemRefusal(home.pathOf(kLock), errno);
  return file;
}

}  // namespace

std::string homePath() {
  const char* given = getenv("KESTROVE_HOME");
  return given ? given : kFolder;
}

std::optional<Home> Home::find() {
  const std::string path = homePath();
  if (path.empty()) return std::nullopt;
  Descriptor folder = openFolder(path);
  if (!folder && errno == ENOENT) return std::nullopt;
  if (!folder && (errno == ELOOP || errno == ENOTDIR)) throw Refusal(kSystem, path + ": a link or a file, no folder");
  if (!folder) throw systemRefusal(path, errno);
  refuseForeign(folder.get(), path);
  return Home(std::move(folder));
}

Home Home::make() {
  const std::string path = homePath();
  if (mkdir(path.c_str(), kOwnersAlone) != 0 && errno != EEXIST) throw systemRefusal(path, errno);
  std::optional<Home> home = find();
  if (!home) throw systemRefusal(path, ENOENT);
  return std::move(*home);
}

std::vector<std::string> Home::names() const {
  std::vector<std::string> found;
  const int again = openat(folder_.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  std::unique_ptr<DIR, int (*)(DIR*)> folder(again == -1 ? nullptr : fdopendir(again), closedir);
  if (!folder) throw systemRefusal(homePath(), errno);
  while (const dirent* entry = readdir(folder.get())) found.push_back(entry->d_name);
  return found;
}

std::optional<std::string> Home::read(const std::string& name) const {
  Descriptor file(openat(folder_.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  if (!file && errno == ENOENT) return std::nullopt;
  if (!file) throw systemRefusal(pathOf(name), errno);
  return readWhole(file.get(), pathOf(name));
}

// A temporary file that a killed process left is written over: whoever writes here has the lock.
void Home::write(const std::string& name, const std::string& text) const {
  const std::string fresh = name + ".new";
  Descriptor file(
      openat(folder_.get(), fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, kOwnersFile));
  if (!file) throw systemRefusal(pathOf(name), errno);
  if (!tools::writeWhole(file.get(), text) || fsync(file.get()) != 0 || ::close(file.release()) != 0) {
    const int error = errno;
    unlinkat(folder_.get(), fresh.c_str(), 0);
    throw systemRefusal(pathOf(name), error);
  }
  rename(fresh, name);
}

void Home::rename(const std::string& from, const std::string& to) const {
  if (renameat(folder_.get(), from.c_str(), folder_.get(), to.c_str()) != 0) throw systemRefusal(pathOf(to), errno);
  sync(to);
}

void Home::remove(const std::string& name) const {
  if (unlinkat(folder_.get(), name.c_str(), 0) != 0) {
    if (errno == ENOENT) return;
    throw systemRefusal(pathOf(name), errno);
  }
  sync(name);
}

void Home::sync(const std::string& name) const {
  if (fsync(folder_.get()) != 0) throw systemRefusal(pathOf(name), errno);
}

std::optional<HomeLock> HomeLock::wait(const Home& home, double seconds) {
  Descriptor file = openLock(home);
  const double most = tools::waitLeft(seconds);
  for (double waited = 0; flock(file.get(), LOCK_EX | LOCK_NB) != 0; waited += kPauseMicroseconds / 1e6) {
    if (errno != EWOULDBLOCK && errno != EINTR) throw systemRefusal(home.pathOf(kLock), errno);
    if (waited >= most) return std::nullopt;
    usleep(kPauseMicroseconds);
    tools::countWait(kPauseMicroseconds / 1e6);
  }
  return HomeLock(std::move(file));
}

HomeLock HomeLock::take(const Home& home) {
  Descriptor file = openLock(home);
  while (flock(file.get(), LOCK_EX) != 0) {
    if (errno != EINTR) throw systemRefusal(home.pathOf(kLock), errno);
  }
  return HomeLock(std::move(file));
}

}  // namespace ctl
