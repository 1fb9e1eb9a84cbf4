// SPDX-License-Identifier: Apache-2.0
// A process that is watched: by a descriptor, which stays with it when its number is used again.
#pragma once

#include <string>
#include <vector>

#include "sys/descriptor.h"

namespace monitor {

class Process {
 public:
  Process() = default;

  // A program as this process's own child, in a session of its own. None when it cannot be made.
  static Process start(const std::vector<std::string>& words);

  // A function of this program likewise, whose result is its status. Whatever is said there goes to that descriptor.
  static Process call(int (*work)(), int words);

  // One that is there already and began at that time; 0 for any. None when there is no such process.
  static Process adopt(int pid, unsigned long long since);

  explicit operator bool() const { return static_cast<bool>(descriptor_); }
  int pid() const { return pid_; }
  unsigned long long since() const { return since_; }
  int descriptor() const { return descriptor_.get(); }  // can be read when the process has ended
  std::string name() const;

  void signal(int number) const;
  // Whether it is over. The first call that says so takes an own child in.
  bool ended();
  // "exit status 3", "signal 9"; of others than own children "no status".
  std::string ending() const;

 private:
  static Process born(int child);

  int pid_ = 0;
  bool child_ = false;
  unsigned long long since_ = 0;
  int status_ = -1;
  kestrove::sys::Descriptor descriptor_;
};

}  // namespace monitor
