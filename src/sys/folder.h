// SPDX-License-Identifier: Apache-2.0
// The folder that a file stands in.
#pragma once

#include "sys/descriptor.h"

namespace kestrove::sys {

const char* lastComponent(const char* path);

[[nodiscard]] Descriptor openFolderOf(const char* path);

// Holds the folder of a file against others who change that file in the same way, for a scope. Where the folder cannot
// be opened nobody can put a file into it either, and nothing is held.
class [[nodiscard]] FolderLock {
 public:
  explicit FolderLock(const char* path);

 private:
  Descriptor folder_;  // closing it lets go
};

}  // namespace kestrove::sys
