// SPDX-License-Identifier: Apache-2.0
#include "sys/scratch_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrove::sys {

Descriptor makeScratchFile(const char* path) {
  unlink(path);
  return Descriptor(open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
}

}  // namespace kestrove::sys
