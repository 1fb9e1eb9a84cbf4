// SPDX-License-Identifier: Apache-2.0
#include "sys/leftovers.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "sys/descriptor.h"

namespace kestrove::sys {
namespace {

constexpr char kSuffix[] = ".new";

const char* skipNumber(const char* at) {
  if (*at++ != '.') return nullptr;
  size_t digits = strspn(at, "0123456789");
  return digits ? at + digits : nullptr;
}

// ".target.process.serial.new"
bool isTemporaryOf(const char* target, const char* name) {
  size_t length = strlen(target);
  if (name[0] != '.' || strncmp(name + 1, target, length) != 0) return false;
  const char* at = skipNumber(name + 1 + length);
  if (at) at = skipNumber(at);
  return at && strcmp(at, kSuffix) == 0;
}

// Whoever writes a temporary file holds a lock on it, so that a process number that was given again does not matter.
void removeAbandoned(int directory, const char* name) {
  Descriptor file(openat(directory, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status;
  if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return;
  if (flock(file.get(), LOCK_EX | LOCK_NB) == 0) unlinkat(directory, name, 0);
}

}  // namespace

bool nameTemporaryFile(char* buffer, size_t size, const char* target) {
  static unsigned serial = 0;
  int length = snprintf(buffer, size, ".%s.%d.%u%s", target, static_cast<int>(getpid()), ++serial, kSuffix);
  return length > 0 && static_cast<size_t>(length) < size;
}

void removeLeftoversIn(int directory, const char* target) {
  alignas(dirent64) char entries[4096];
  ssize_t filled;
  while ((filled = getdents64(directory, entries, sizeof entries)) > 0) {
    for (ssize_t at = 0; at < filled;) {
      const auto* entry = reinterpret_cast<const dirent64*>(entries + at);
      if (isTemporaryOf(target, entry->d_name)) removeAbandoned(directory, entry->d_name);
      at += entry->d_reclen;
    }
  }
}

}  // namespace kestrove::sys
