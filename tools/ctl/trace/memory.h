// SPDX-License-Identifier: Apache-2.0
// The memory of a process that is watched, or of this one. The process has this program's width.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ctl {

class Memory {
 public:
  explicit Memory(pid_t process) : process_(process) {}

  // False when not all of it can be read.
  bool read(uint64_t address, void* out, size_t size) const;
  template <typename Record>
  bool read(uint64_t address, Record& out) const {
    return read(address, &out, sizeof out);
  }

  // A text up to its zero, or to where the memory ends.
  std::string text(uint64_t address) const;
  // The texts that a vector points to, up to its null.
  std::vector<std::string> texts(uint64_t address) const;

 private:
  pid_t process_;
};

}  // namespace ctl
