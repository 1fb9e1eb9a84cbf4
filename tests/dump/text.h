// What the dump prints, whole or in parts.
#pragma once

#include <arpa/inet.h>
#include <stdio.h>
#include <string.h>

#include "kestrove/dump.h"
#include "tests/support/store.h"

namespace kestrove::testing {

inline std::string printed(int (*print)(FILE*)) {
  char* text = nullptr;
  size_t size = 0;
  FILE* stream = open_memstream(&text, &size);
  EXPECT_EQ(0, print(stream));
  fclose(stream);
  std::string result(text, size);
  free(text);
  return result;
}

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

inline uint32_t quad(const char* text) { return inet_addr(text); }

inline void putRoute(uint32_t slot, const char* destination, const char* mask, const char* gateway, uint32_t status,
                     uint32_t next) {
  shm->routes.slot[slot] = {quad(destination), quad(mask), quad(gateway), status, 1, next};
}

inline void putRoute6(uint32_t slot, const char* destination, uint32_t length, const char* gateway, uint32_t status,
                      uint32_t next) {
  Route6Entry& route = shm->routes6.slot[slot];
  inet_pton(AF_INET6, destination, route.destination);
  inet_pton(AF_INET6, gateway, route.gateway);
  route.prefixLength = length;
  route.status = status;
  route.inUse = 1;
  route.next = next;
}

}  // namespace kestrove::testing
