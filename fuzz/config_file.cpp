// SPDX-License-Identifier: Apache-2.0
// A whole configuration file: read, and what came of it written and read again.
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include "config/reader.h"
#include "config/writer.h"
#include "fuzz/fuzz_fixture.h"
#include "sys/descriptor.h"

using namespace kestrove;

namespace {

constexpr char kPath[] = "/etc/config/kestrove.conf";

struct FileTarget {
  int fd;
  bool write(const char* data, size_t size) { return ::write(fd, data, size) == static_cast<ssize_t>(size); }
};

void readBack(int fd) {
  lseek(fd, 0, SEEK_SET);
  if (!readConfigFile(kPath, fd)) abort();
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzzing::freshStore();
  sys::Descriptor input(memfd_create("input", 0));
  sys::Descriptor output(memfd_create("output", 0));
  if (write(input.get(), data, size) != static_cast<ssize_t>(size)) abort();
  readBack(input.get());
  fuzzing::checkStore();
  FileTarget target = {output.get()};
  sys::TextWriter out(target);
  if (writeConfigFile(out) != 0 || !out.flush()) abort();
  fuzzing::freshStore();
  readBack(output.get());
  fuzzing::checkStore();
  return 0;
}
