// SPDX-License-Identifier: Apache-2.0
#include "tools/common/process_time.h"

#include <cstdio>
#include <cstring>

namespace tools {

// Field 22 of /proc/PID/stat, counted behind the name, which may hold blanks and brackets.
unsigned long long startTimeOf(int pid) {
  char path[64];
  char stat[1024];
  snprintf(path, sizeof path, "/proc/%d/stat", pid);
  FILE* file = fopen(path, "re");
  if (!file) return 0;
  size_t length = fread(stat, 1, sizeof stat - 1, file);
  fclose(file);
  stat[length] = '\0';
  const char* behindName = strrchr(stat, ')');
  unsigned long long start = 0;
  if (!behindName) return 0;
  sscanf(behindName + 1, " %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %*u %*u %*d %*d %*d %*d %*d %*d %llu", &start);
  return start;
}

}  // namespace tools
