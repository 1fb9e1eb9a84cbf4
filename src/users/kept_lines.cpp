// SPDX-License-Identifier: Apache-2.0
#include "users/kept_lines.h"

#include <string.h>
#include <sys/types.h>
#include <syslog.h>

namespace kestrove {
namespace {

constexpr size_t kFirstCapacity = 4096;

// The buffer of getline.
struct Line {
  ~Line() { free(text); }
  char* text = nullptr;
  size_t size = 0;
};

bool named(std::string_view line, std::string_view name) {
  return line.size() > name.size() && line.starts_with(name) && line[name.size()] == ':';
}

}  // namespace

bool KeptLines::gather(FILE* file, std::string_view name) {
  Line buffer;
  for (ssize_t length; (length = getline(&buffer.text, &buffer.size, file)) > 0;) {
    std::string_view line(buffer.text, static_cast<size_t>(length));
    bool stays = !named(line, name);
    if (line.back() != '\n') {  // lost: kept on purpose
      if (stays) syslog(LOG_WARNING, "removeUser: the unfinished last line of the password file is lost");
    } else if (stays && !keep(line)) {
      return false;
    }
  }
  return feof(file) && !ferror(file);
}

bool KeptLines::keep(std::string_view line) {
  if (size_ + line.size() > capacity_ && !grow(size_ + line.size())) return false;
  memcpy(data_ + size_, line.data(), line.size());
  size_ += line.size();
  return true;
}

bool KeptLines::grow(size_t size) {
  if (size > kLimit) return false;
  size_t capacity = capacity_ ? capacity_ : kFirstCapacity;
  while (capacity < size) capacity *= 2;
  void* grown = realloc(data_, capacity);
  if (!grown) return false;
  data_ = static_cast<char*>(grown);
  capacity_ = capacity;
  return true;
}

}  // namespace kestrove
