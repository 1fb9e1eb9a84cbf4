// SPDX-License-Identifier: Apache-2.0
// Standard streams and pipes that close themselves.
#pragma once

#include <stdio.h>

#include "sys/descriptor.h"

namespace kestrove::sys {

template <int (*Close)(FILE*)>
class StreamGuard {
 public:
  explicit StreamGuard(FILE* stream = nullptr) : stream_(stream) {}
  ~StreamGuard() { close(); }
  StreamGuard(StreamGuard&& other) noexcept : stream_(other.release()) {}
  StreamGuard& operator=(StreamGuard&& other) noexcept {
    if (this != &other) {
      close();
      stream_ = other.release();
    }
    return *this;
  }

  explicit operator bool() const { return stream_ != nullptr; }
  FILE* get() const { return stream_; }
  FILE* release() {
    FILE* stream = stream_;
    stream_ = nullptr;
    return stream;
  }
  int close() { return stream_ ? Close(release()) : 0; }

 private:
  FILE* stream_;
};

using Stream = StreamGuard<fclose>;
using Pipe = StreamGuard<pclose>;

// The descriptor goes with the stream; without one, or without memory, there is none.
[[nodiscard]] inline Stream streamOn(Descriptor descriptor, const char* mode) {
  FILE* stream = descriptor ? fdopen(descriptor.get(), mode) : nullptr;
  if (stream) descriptor.release();
  return Stream(stream);
}

}  // namespace kestrove::sys
