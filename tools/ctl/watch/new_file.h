// SPDX-License-Identifier: Apache-2.0
// A file that appears whole or not at all.
#pragma once

#include <sys/types.h>

#include <string>

namespace ctl {

// Beside the place where it is to be, under a name of its own; gone unless it is put there. Throws kSystem or
// kNotPermitted.
class NewFile {
 public:
  NewFile(std::string path, mode_t mode);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  const std::string& name() const { return name_; }  // under which it can be written meanwhile
  void write(const std::string& text);
  // On the disk, and then in place of what was there.
  void putInPlace();

 private:
  std::string path_;
  std::string name_;
  int fd_;
};

}  // namespace ctl
