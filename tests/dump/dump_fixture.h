// SPDX-License-Identifier: Apache-2.0
// What the dump prints, whole or in parts.
#pragma once

#include <arpa/inet.h>
#include <stdio.h>
#include <string.h>

#include "kestrove/dump.h"
#include "tests/support/addresses.h"
#include "tests/support/memory_stream.h"
#include "tests/support/records.h"
#include "tests/support/store.h"

namespace kestrove::testing {

inline std::string dump() { return printed(dumpSharedMemory); }

// The part of the dump from a heading to the next one.
inline std::string section(const std::string& heading) {
  const std::string whole = dump();
  size_t from = whole.find("-->   " + heading);
  EXPECT_NE(whole.npos, from) << heading;
  from = whole.find('\n', from) + 1;
  return whole.substr(from, whole.find("-->   ", from) - from);
}

// What the dump says behind a label, without the tabs.
inline std::string value(const std::string& label) {
  const std::string whole = dump();
  size_t from = whole.find("\n  " + label + ": \t");
  EXPECT_NE(whole.npos, from) << label;
  from = whole.find_first_not_of('\t', whole.find('\t', from));
  return whole.substr(from, whole.find('\n', from) - from);
}

inline int countLines(const std::string& text, const std::string& part) {
  int count = 0;
  for (size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
  return count;
}

inline void putRoute(uint32_t slot, const char* destination, const char* mask, const char* gateway, uint32_t status,
                     uint32_t next) {
  shm->routes.slot[slot] = linked(routeRecord(destination, mask, gateway, status), next);
}

inline void putRoute6(uint32_t slot, const char* destination, uint32_t length, const char* gateway, uint32_t status,
                      uint32_t next) {
  shm->routes6.slot[slot] = linked(route6Record(destination, length, gateway, status), next);
}

}  // namespace kestrove::testing
