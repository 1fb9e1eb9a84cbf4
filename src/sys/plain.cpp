// SPDX-License-Identifier: Apache-2.0
#include "sys/plain.h"

#include <stddef.h>
#include <stdint.h>

namespace kestrove::sys {
namespace {

constexpr size_t kLongestInterface = 15;
constexpr size_t kLongestBase = 16;
constexpr size_t kLongestVlan = 10;
constexpr uint64_t kLowestPid = 2;  // 1 is the system's first process, 0 and -1 are groups of them
constexpr uint64_t kHighestPid = INT32_MAX;

bool digit(char c) { return c >= '0' && c <= '9'; }
bool letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool hexadecimal(char c) { return digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }
bool oneOf(char c, std::string_view set) { return set.find(c) != std::string_view::npos; }

template <typename Test>
bool all(std::string_view text, Test test) {
  for (char c : text) {
    if (!test(c)) return false;
  }
  return true;
}

bool plainVlan(std::string_view name) {
  size_t dot = name.rfind('.');
  if (dot > kLongestBase) return false;  // as it is where there is none
  std::string_view id = name;
  id.remove_prefix(dot + 1);
  if (id.starts_with('-')) id.remove_prefix(1);  // an id is printed as a signed number
  return !id.empty() && id.size() <= kLongestVlan && all(id, digit);
}

// Saturates: no number is taken for a smaller one.
uint64_t valueOf(std::string_view digits) {
  uint64_t value = 0;
  for (char c : digits) {
    if (value <= kHighestPid) value = value * 10 + static_cast<uint64_t>(c - '0');
  }
  return value;
}

}  // namespace

// With a "-" at its head a word would be an option of the program.
bool plainName(std::string_view name) {
  return !name.starts_with('-') && all(name, [](char c) { return letter(c) || digit(c) || oneOf(c, "._-:@"); });
}

bool plainInterface(std::string_view name) {
  return plainName(name) && (name.size() <= kLongestInterface || plainVlan(name));
}

bool plainAddress(std::string_view text) {
  return all(text, [](char c) { return hexadecimal(c) || oneOf(c, ".:/ "); });
}

bool plainPath(std::string_view path) {
  return !path.empty() && path[0] == '/' &&
         all(path, [](char c) { return letter(c) || digit(c) || oneOf(c, "/._-+:@"); });
}

bool plainPid(std::string_view pid) {
  if (pid.empty()) return true;
  return all(pid, digit) && valueOf(pid) >= kLowestPid && valueOf(pid) <= kHighestPid;
}

}  // namespace kestrove::sys
