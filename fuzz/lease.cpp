// SPDX-License-Identifier: Apache-2.0
// A file in the place of the DHCP client's lease.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "fuzz/fuzz_fixture.h"
#include "net/dhcp/lease.h"

namespace {

constexpr uint32_t kLastKind = 6;
constexpr size_t kLongestValue = 119;

size_t calls;

int takeSetting(uint32_t* kind, const char* value) {
  ++calls;
  bool good = *kind <= kLastKind && strlen(value) <= kLongestValue && !strpbrk(value, "'\n");
  if (good) return 0;
  fprintf(stderr, "kind %u, value %s\n", *kind, value);
  abort();
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  FILE* file = fmemopen(const_cast<uint8_t*>(data), size, "r");
  if (!file) abort();
  uint32_t kind = 0;
  calls = 0;
  kestrove::readLease(file, takeSetting, &kind);
  fclose(file);
  if (calls == 0 || calls > size) abort();
  return 0;
}
