// Small words of the interface tests.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdio.h>

#include <array>
#include <string>

namespace kestrove::testing {

inline uint32_t v4(const char* text) { return inet_addr(text); }

inline std::array<uint8_t, 16> v6(const char* text) {
  std::array<uint8_t, 16> address = {};
  inet_pton(AF_INET6, text, address.data());
  return address;
}

// What a shell line prints.
inline std::string output(const std::string& line) {
  std::string text;
  FILE* pipe = popen((line + " 2>&1").c_str(), "re");
  for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) text += static_cast<char>(c);
  pclose(pipe);
  return text;
}

}  // namespace kestrove::testing
