// SPDX-License-Identifier: Apache-2.0
// A file descriptor that closes itself.
#pragma once

#include <errno.h>
#include <unistd.h>

namespace kestrove::sys {

class [[nodiscard]] Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  ~Descriptor() { close(); }
  Descriptor(Descriptor&& other) noexcept : fd_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) {
      close();
      fd_ = other.release();
    }
    return *this;
  }

  explicit operator bool() const { return fd_ >= 0; }
  int get() const { return fd_; }
  int release() {
    int fd = fd_;
    fd_ = -1;
    return fd;
  }
  // Keeps errno, so that a caller may still read why the work before it failed.
  void close() {
    if (fd_ < 0) return;
    int error = errno;
    ::close(release());
    errno = error;
  }

 private:
  int fd_;
};

}  // namespace kestrove::sys
