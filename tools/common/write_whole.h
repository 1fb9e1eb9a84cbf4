// SPDX-License-Identifier: Apache-2.0
// All of a text, however many calls that takes.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <string>

namespace tools {

inline bool writeWhole(int fd, const std::string& text) {
  for (size_t done = 0; done < text.size();) {
    const ssize_t length = write(fd, text.data() + done, text.size() - done);
    if (length < 0 && errno == EINTR) continue;
    if (length <= 0) return false;
    done += static_cast<size_t>(length);
  }
  return true;
}

}  // namespace tools
