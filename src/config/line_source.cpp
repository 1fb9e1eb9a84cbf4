// SPDX-License-Identifier: Apache-2.0
#include "config/line_source.h"

#include <string.h>
#include <unistd.h>

#include "sys/repeated.h"

namespace kestrove {

char* LineSource::next() {
  size_t length = 0;  // characters of the line that are known to hold no newline
  for (;;) {
    char* start = buffer_ + begin_;
    auto* newline = static_cast<char*>(memchr(start + length, '\n', end_ - begin_ - length));
    if (newline) {
      length = static_cast<size_t>(newline - start);
      return take(length, length + 1);
    }
    length = makeRoom();
    if (!refill()) break;
  }
  return failed_ || length == 0 ? nullptr : take(length, length);
}

char* LineSource::take(size_t length, size_t consumed) {
  char* line = buffer_ + begin_;
  line[length < kLongestLine ? length : kLongestLine] = '\0';
  begin_ += consumed;
  return line;
}

// Moves the unfinished line to the front. Of one that fills the buffer only what will be seen is kept.
size_t LineSource::makeRoom() {
  end_ -= begin_;
  memmove(buffer_, buffer_ + begin_, end_);
  begin_ = 0;
  if (end_ == kCapacity) end_ = kLongestLine;
  return end_;
}

bool LineSource::refill() {
  if (ended_) return false;
  ssize_t count = sys::repeated([this] { return read(fd_, buffer_ + end_, kCapacity - end_); });
  ended_ = count <= 0;
  failed_ = count < 0;
  if (count > 0) end_ += static_cast<size_t>(count);
  return count > 0;
}

}  // namespace kestrove
