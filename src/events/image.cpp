// SPDX-License-Identifier: Apache-2.0
// The event log's file: a byte-for-byte image of the log in the store.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "kestrove/events.h"
#include "store/fail.h"
#include "sys/descriptor.h"

namespace kestrove {
namespace {

using sys::Descriptor;

constexpr size_t kImageSize = sizeof(EventLog);
static_assert(kImageSize == 360460, "programs of other builds read this file");
constexpr mode_t kImageMode = 0666;

// Signals of the front end must not lose an event.
template <class Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

[[nodiscard]] bool writeAll(int fd, const char* data, size_t size) {
  while (size > 0) {
    ssize_t written = uninterrupted([&] { return write(fd, data, size); });
    if (written <= 0) return false;
    data += written;
    size -= static_cast<size_t>(written);
  }
  return true;
}

[[nodiscard]] bool readAll(int fd, char* data, size_t size) {
  while (size > 0) {
    ssize_t taken = uninterrupted([&] { return read(fd, data, size); });
    if (taken <= 0) return false;
    data += taken;
    size -= static_cast<size_t>(taken);
  }
  return true;
}

// Only after the whole image is in place: the file is never shorter than it. Its end is asked for first, which is
// cheaper than everything about it.
[[nodiscard]] bool cutToSize(int fd) {
  if (lseek(fd, 0, SEEK_END) <= static_cast<off_t>(kImageSize)) return true;
  struct stat file;
  if (fstat(fd, &file) != 0) return false;
  if (!S_ISREG(file.st_mode)) return true;
  return uninterrupted([&] { return ftruncate(fd, kImageSize); }) == 0;
}

bool tooShort(int fd) {
  struct stat file;
  return fstat(fd, &file) == 0 && S_ISREG(file.st_mode) && file.st_size < static_cast<off_t>(kImageSize);
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

// Overwritten in place and never shortened first, so that it is whole at every moment, a power cut or a kill included:
// what a killed writer leaves is the new image up to some byte and the old one behind it.
int write_event_log(const char* path, const void* area) {
  if (!path || !area) return fail(SHM_EINVAL);
  Descriptor file(uninterrupted([&] { return open(path, O_WRONLY | O_CREAT | O_CLOEXEC, kImageMode); }));
  if (!file) return fail(SHM_EOPEN);
  bool whole = writeAll(file.get(), static_cast<const char*>(area), kImageSize) && cutToSize(file.get());
  return whole ? 0 : fail(SHM_EIO);
}

int read_event_log(const char* path, void* area) {
  if (!path || !area) return fail(SHM_EINVAL);
  Descriptor file(uninterrupted([&] { return open(path, O_RDONLY | O_CLOEXEC); }));
  if (!file || tooShort(file.get())) return -1;
  return readAll(file.get(), static_cast<char*>(area), kImageSize) ? 0 : -1;
}
