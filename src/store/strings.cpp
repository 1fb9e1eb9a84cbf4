// SPDX-License-Identifier: Apache-2.0
// Small checks and copies that front ends ask for.
#include <string.h>
#include <syslog.h>

#include "kestrove/text.h"
#include "store/fail.h"

namespace {
constexpr size_t kFieldWidth = 256;  // every destination of stringCopy
}

using namespace kestrove;

int stringCopy(char* dst, const char* src) {
  if (!dst || !src) return fail(SHM_EINVAL);
  size_t length = strlen(src);
  if (length >= kFieldWidth) {
    syslog(LOG_WARNING, "Trying to write over memory:'%.*s' '%s'\n", static_cast<int>(kFieldWidth), dst, src);
    return fail(SHM_ERANGE);
  }
  memmove(dst, src, length + 1);
  return 0;
}

int validateIntInBounds(int value, int min, int max) { return value < min || value > max ? fail(SHM_ERANGE) : 0; }
