// SPDX-License-Identifier: Apache-2.0
// Files that are replaced whole.
//
// A reader, and whoever comes after a power cut or a killed process, finds the old contents or the new ones and never
// a part. The new contents go to a temporary file beside the target, whose every write is checked; commit() brings
// them to the disk, renames them over the target and brings the directory to the disk. Owner and mode are kept.
//
// Where a rename would do harm or is refused (the target is a link, a device, has several names, is a mount point, or
// its directory cannot be written to) the target is written in place: from the finished temporary file, with the room
// on the disk reserved first, or directly where not even that file can be made. Only in the direct case can a failure
// leave a part. The target is cut to its new length last.
//
//   sys::Replacement file(path);
//   if (!file) return fail(SHM_ESYSTEM);   // errno tells why it cannot be opened for writing
//   sys::TextWriter out(file);
//   ... out.text("...");
//   if (!out.flush() || !file.commit()) ... the old contents stand; errno tells why
#pragma once

#include <limits.h>
#include <sys/types.h>

#include "sys/descriptor.h"

namespace kestrove::sys {

class Replacement {
 public:
  // Opens the target for writing, which leaves it as it is, and the temporary file. What killed processes left of
  // earlier attempts on this target is removed.
  explicit Replacement(const char* path);
  // Without a commit the old contents stand.
  ~Replacement() { dropTemporary(); }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

  // The target can be opened for writing.
  explicit operator bool() const { return usable_; }

  // Appends to the new contents. False from the first failure on, with errno as it was then.
  [[nodiscard]] bool write(const void* data, size_t size);

  // Puts the new contents in place; once. False: errno tells why.
  [[nodiscard]] bool commit();

 private:
  enum class Way { kRename, kCopy, kDirect };

  bool openTarget(int flags);
  void prepareExisting();
  void prepareFresh();
  void followTarget();
  bool targetHasItsName() const;
  bool targetIsPlain() const;
  bool keepOwner();
  bool openTemporary(mode_t mode);
  bool createTemporary(mode_t mode);
  bool moveIntoPlace();
  bool copyIntoPlace();
  bool finishTarget();
  void dropTemporary();
  bool failed();
  int output() const { return way_ == Way::kDirect ? target_.get() : temporary_.get(); }

  const char* path_;
  const char* name_;  // the last component of path_
  Descriptor directory_;
  Descriptor target_;
  Descriptor temporary_;
  Way way_ = Way::kDirect;
  bool usable_ = false;
  int error_ = 0;  // of the first failure
  off_t size_ = 0;
  char temporaryName_[NAME_MAX + 1] = "";
};

// Removes what killed processes left beside a target, for start-ups.
void removeLeftovers(const char* path);

}  // namespace kestrove::sys
