// SPDX-License-Identifier: Apache-2.0
// Addresses as a test writes them and as records hold them.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <array>
#include <string>

namespace kestrove::testing {

using Ip6 = std::array<uint8_t, 16>;

// A text that is no address is a mistake of the test itself.
inline void readAddress(int family, const std::string& text, void* address) {
  if (inet_pton(family, text.c_str(), address) == 1) return;
  fprintf(stderr, "\"%s\" is no address\n", text.c_str());
  abort();
}

// The word of a record for "10.1.2.3".
inline uint32_t quad(const std::string& text) {
  uint32_t address = 0;
  readAddress(AF_INET, text, &address);
  return address;
}

inline Ip6 ip6(const std::string& text) {
  Ip6 address = {};
  readAddress(AF_INET6, text, address.data());
  return address;
}

inline void setIp6(uint8_t (&field)[16], const std::string& text) { readAddress(AF_INET6, text, field); }

inline std::string ip6Text(const uint8_t* address) {
  char text[INET6_ADDRSTRLEN];
  return inet_ntop(AF_INET6, address, text, sizeof text);
}

// The network mask of so many ones, 0 to 32.
inline uint32_t maskOf(int ones) { return htonl(ones == 0 ? 0 : ~uint32_t{0} << (32 - ones)); }

}  // namespace kestrove::testing
