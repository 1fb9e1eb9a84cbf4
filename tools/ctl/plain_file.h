// SPDX-License-Identifier: Apache-2.0
// Files that are named on a command line.
#pragma once

#include <sys/types.h>

#include <string>

namespace ctl {

// Looks at it without opening what would wait or act: throws when it is not there or is no plain file, "PATH: a folder,
// no configuration file". Gives its size.
off_t requirePlainFile(const std::string& path, const std::string& meant);

}  // namespace ctl
