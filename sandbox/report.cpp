// SPDX-License-Identifier: Apache-2.0
#include "sandbox/report.h"

#include <errno.h>
#include <stdarg.h>
#include <stdio.h>
#include <unistd.h>

namespace kestrove::sandbox {

void giveUp(const char* format, ...) {
  int error = errno;
  va_list arguments;
  va_start(arguments, format);
  fputs("kestrove-sandbox: ", stderr);
  errno = error;
  vfprintf(stderr, format, arguments);
  fputc('\n', stderr);
  va_end(arguments);
  fflush(stderr);
  _exit(kLauncherFailed);
}

}  // namespace kestrove::sandbox
