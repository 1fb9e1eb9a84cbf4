// SPDX-License-Identifier: Apache-2.0
// What stands in the memory of this process.
#pragma once

#include <stdio.h>

#include <string>
#include <vector>

namespace kestrove::testing {

struct Area {
  unsigned long start, end;
};

// The writable memory of this process, itself as it is now.
inline std::vector<Area> writableMemory() {
  std::vector<Area> areas;
  FILE* maps = fopen("/proc/self/maps", "r");
  char line[512];
  while (fgets(line, sizeof line, maps)) {
    Area area;
    char access[8];
    if (sscanf(line, "%lx-%lx %7s", &area.start, &area.end, access) == 3 && access[1] == 'w' && access[0] == 'r') {
      areas.push_back(area);
    }
  }
  fclose(maps);
  return areas;
}

// Larger areas are a sanitizer's bookkeeping.
constexpr unsigned long kLargestArea = 64ul * 1024 * 1024;

// How often the text stands in memory, between the frames of the stack, too. Its first character is given apart, so
// that the text searched for is none.
__attribute__((no_sanitize("address"))) inline int occurrences(char first, const std::string& rest) {
  int count = 0;
  for (const Area& area : writableMemory()) {
    if (area.end - area.start > kLargestArea) continue;
    const char* end = reinterpret_cast<const char*>(area.end) - rest.size();
    for (const char* at = reinterpret_cast<const char*>(area.start); at < end; ++at) {
      if (*at != first) continue;
      size_t same = 0;
      while (same < rest.size() && at[same + 1] == rest[same]) ++same;
      count += same == rest.size();
    }
  }
  return count;
}

}  // namespace kestrove::testing
