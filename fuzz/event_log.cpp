// SPDX-License-Identifier: Apache-2.0
// A file in the place of the event log's image: read into the store, then listed, read, extended.
//
// The first byte of the input is a set of flags: bit 0, whether the rest is repeated until an image is full or is the
// file as it stands; bit 1, whether the log is listed as a whole too, which takes its time.
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <initializer_list>

#include "fuzz/fuzz_fixture.h"
#include "kestrove/kestrove.h"
#include "sys/descriptor.h"

namespace {

constexpr char kFile[] = "/tmp/event.log";
constexpr size_t kImage = sizeof(EventLog);
constexpr uint8_t kRepeated = 1;
constexpr uint8_t kListed = 2;
char image[kImage];

void demand(bool condition, const char* what) {
  if (condition) return;
  fprintf(stderr, "the event log is damaged: %s\n", what);
  abort();
}

size_t lay(const uint8_t* data, size_t size) {
  bool repeated = size > 0 && (data[0] & kRepeated);
  if (size > 0) ++data, --size;
  if (!repeated || size == 0) {
    if (size > kImage) size = kImage;
    if (size > 0) memcpy(image, data, size);
    return size;
  }
  for (size_t at = 0; at < kImage; ++at) image[at] = static_cast<char>(data[at % size]);
  return kImage;
}

void writeFile(size_t size) {
  kestrove::sys::Descriptor file(open(kFile, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  demand(write(file.get(), image, size) == static_cast<ssize_t>(size), "the file could not be laid");
}

void readEveryWay() {
  char line[128];
  for (uint32_t index : {0u, 1u, 4095u, 8190u, 8191u, 8192u}) {
    for (int layout = 1; layout <= 3; ++layout) {
      int length = getEventString(index, line, sizeof line, layout);
      demand(length >= 0 && length < static_cast<int>(sizeof line), "a line's length");
      demand(length == 0 || strnlen(line, sizeof line) <= static_cast<size_t>(length), "a line's end");
    }
  }
  getEventCount();
}

FILE* nowhere() {
  static FILE* stream = fopen("/dev/null", "w");
  return stream;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kestrove::fuzzing::freshStore();
  size_t length = lay(data, size);
  writeFile(length);
  int result = read_event_log(kFile, &shm->eventLog);
  demand((result == 0) == (length == kImage), "a whole file is read and no other");
  demand(result != 0 || memcmp(image, &shm->eventLog, kImage) == 0, "the bytes read");
  readEveryWay();
  demand(size == 0 || !(data[0] & kListed) || printEventLog(nowhere()) == 0, "the listing");
  demand(logEvent(size > 0 ? data[size - 1] : 0, 0, "x") == 0, "an event on top");
  demand(shm->eventLog.writeIndex < SHM_EVENTS, "the writer");
  kestrove::fuzzing::checkStore();
  return 0;
}
