// SPDX-License-Identifier: Apache-2.0
#include "sys/replace.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/file.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <syslog.h>

#include <algorithm>
#include <initializer_list>

#include "sys/folder.h"
#include "sys/leftovers.h"
#include "sys/repeated.h"

namespace kestrove::sys {
namespace {

constexpr int kNames = 100;
constexpr mode_t kFreshMode = 0666;
constexpr mode_t kPrivateMode = 0600;  // until the old file's mode is known to fit the new owner
constexpr mode_t kModeBits = 07777;

bool among(int error, std::initializer_list<int> errors) {
  return std::find(errors.begin(), errors.end(), error) != errors.end();
}

// As opposed to failures that may pass, such as a full disk: then the old file is kept.
bool refused(int error) {
  return among(error, {EACCES, EPERM, EROFS, EBUSY, EXDEV, ENOENT, ENOTDIR, ENAMETOOLONG, EOPNOTSUPP, EINVAL});
}

// Devices, and file systems that cannot.
bool unsupported(int error) { return among(error, {EINVAL, EOPNOTSUPP, ENOSYS}); }

bool sync(int fd) {
  return repeated([fd] { return fsync(fd); }) == 0 || unsupported(errno);
}

bool sameFile(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

}  // namespace

Replacement::Replacement(const char* path) : path_(path), name_(lastComponent(path)) {
  bool found = openTarget(0);
  if (!found && errno != ENOENT) return;
  int reason = errno;
  directory_ = openFolderOf(path);
  if (directory_) removeLeftoversIn(directory_.get(), name_);
  errno = reason;
  if (found) {
    prepareExisting();
  } else {
    prepareFresh();
  }
}

bool Replacement::openTarget(int flags) {
  target_ = Descriptor(repeated([&] { return ::open(path_, O_WRONLY | O_CLOEXEC | flags, kFreshMode); }));
  usable_ = static_cast<bool>(target_);
  return usable_;
}

void Replacement::prepareExisting() {
  struct stat old;
  if (fstat(target_.get(), &old) != 0) {
    failed();
    return;
  }
  if (!S_ISREG(old.st_mode)) return;
  if (openTemporary(kPrivateMode)) {
    followTarget();
    way_ = targetIsPlain() && keepOwner() ? Way::kRename : Way::kCopy;
  } else if (!refused(errno)) {
    failed();
  }
}

// Nothing is lost when a file that was not there is written directly.
void Replacement::prepareFresh() {
  struct stat link;
  bool absent = directory_ && *name_ && fstatat(directory_.get(), name_, &link, AT_SYMLINK_NOFOLLOW) != 0;
  usable_ = absent && openTemporary(kFreshMode);
  if (usable_) {
    way_ = Way::kRename;
  } else {
    openTarget(O_CREAT);
  }
}

// Others replace files, too: what is written into one that has left its name would be lost.
void Replacement::followTarget() {
  for (int i = 0; i < kNames && !targetHasItsName(); ++i) {
    if (!openTarget(0) && (errno != ENOENT || !openTarget(O_CREAT))) return;
  }
}

bool Replacement::targetHasItsName() const {
  struct stat target, named;
  return fstat(target_.get(), &target) == 0 && stat(path_, &named) == 0 && sameFile(target, named);
}

bool Replacement::targetIsPlain() const {
  struct stat target, named;
  return fstat(target_.get(), &target) == 0 && target.st_nlink == 1 &&
         fstatat(directory_.get(), name_, &named, AT_SYMLINK_NOFOLLOW) == 0 && sameFile(target, named);
}

bool Replacement::keepOwner() {
  struct stat old;
  return fstat(target_.get(), &old) == 0 && fchown(temporary_.get(), old.st_uid, old.st_gid) == 0 &&
         fchmod(temporary_.get(), old.st_mode & kModeBits) == 0;
}

bool Replacement::openTemporary(mode_t mode) {
  if (!directory_) {
    directory_ = openFolderOf(path_);
    if (!directory_) return false;
  }
  for (int i = 0; i < kNames; ++i) {
    if (createTemporary(mode)) return true;
    if (errno != EEXIST) return false;
  }
  return false;
}

// EEXIST: this name is taken, or someone who clears up got hold of the new file before its lock was taken.
bool Replacement::createTemporary(mode_t mode) {
  if (!nameTemporaryFile(temporaryName_, sizeof temporaryName_, name_)) {
    temporaryName_[0] = '\0';
    errno = ENAMETOOLONG;
    return false;
  }
  constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  temporary_ = Descriptor(repeated([&] { return openat(directory_.get(), temporaryName_, kFlags, mode); }));
  if (!temporary_) {
    temporaryName_[0] = '\0';
    return false;
  }
  struct stat status;
  bool locked = repeated([&] { return flock(temporary_.get(), LOCK_EX | LOCK_NB); }) == 0;
  if (locked && fstat(temporary_.get(), &status) == 0 && status.st_nlink == 1) return true;
  int error = locked || errno == EWOULDBLOCK ? EEXIST : errno;
  dropTemporary();
  errno = error;
  return false;
}

bool Replacement::write(const void* data, size_t size) {
  const char* at = static_cast<const char*>(data);
  while (size > 0 && error_ == 0) {
    ssize_t written = repeated([&] { return ::write(output(), at, size); });
    if (written <= 0) return failed();
    at += written;
    size -= static_cast<size_t>(written);
    size_ += written;
  }
  errno = error_ ? error_ : errno;
  return error_ == 0;
}

bool Replacement::commit() {
  if (error_ != 0) {
    errno = error_;
    return false;
  }
  if (way_ == Way::kDirect) return finishTarget() || failed();
  if (!sync(temporary_.get())) return failed();
  if (way_ == Way::kRename && moveIntoPlace()) return true;
  if (way_ == Way::kRename && !refused(errno)) return failed();
  return copyIntoPlace() || failed();
}

bool Replacement::moveIntoPlace() {
  int directory = directory_.get();
  if (repeated([&] { return renameat(directory, temporaryName_, directory, name_); }) != 0) return false;
  temporaryName_[0] = '\0';
  if (!sync(directory)) syslog(LOG_ERR, "Error bringing the directory of %s to the disk: %m", path_);
  return true;
}

// The room is reserved beforehand, so that a full disk is found while the old contents still stand.
bool Replacement::copyIntoPlace() {
  if (!target_ && !openTarget(O_CREAT)) return false;
  followTarget();
  if (!target_) return false;
  auto reserve = [this] { return fallocate(target_.get(), FALLOC_FL_KEEP_SIZE, 0, size_); };
  if (size_ > 0 && repeated(reserve) != 0 && !unsupported(errno)) return false;
  for (off_t offset = 0; offset < size_;) {
    auto rest = static_cast<size_t>(size_ - offset);
    if (repeated([&] { return sendfile(target_.get(), temporary_.get(), &offset, rest); }) <= 0) return false;
  }
  return finishTarget();
}

bool Replacement::finishTarget() {
  bool cut = repeated([this] { return ftruncate(target_.get(), size_); }) == 0 || unsupported(errno);
  return cut && sync(target_.get());
}

void Replacement::dropTemporary() {
  int error = errno;
  if (temporaryName_[0]) unlinkat(directory_.get(), temporaryName_, 0);
  temporaryName_[0] = '\0';
  temporary_.close();
  errno = error;
}

bool Replacement::failed() {
  error_ = errno ? errno : EIO;
  return false;
}

void removeLeftovers(const char* path) {
  Descriptor directory = openFolderOf(path);
  if (directory) removeLeftoversIn(directory.get(), lastComponent(path));
}

}  // namespace kestrove::sys
