// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/trace/words.h"

#include <arpa/inet.h>

#include <bit>
#include <cstdio>
#include <cstring>

namespace ctl {
namespace {

constexpr char kPlain[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-:@/=,+%";

std::string hexNumber(uint64_t number) {
  char text[24];
  snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(number));
  return text;
}

void join(std::string& text, const std::string& word, const char* between) {
  if (!text.empty()) text += between;
  text += word;
}

std::string quoted(const std::string& word) {
  if (!word.empty() && word.find_first_not_of(kPlain) == std::string::npos) return word;
  std::string text = "'";
  for (char c : word) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return text + "'";
}

}  // namespace

std::string nameOf(std::span<const NumberName> table, uint64_t number) {
  for (const NumberName& row : table) {
    if (row.number == number) return row.name;
  }
  return std::to_string(number);
}

std::string flagsText(std::span<const NumberName> table, uint64_t flags) {
  std::string text;
  for (const NumberName& row : table) {
    if (flags & row.number) join(text, row.name, "|");
    flags &= ~row.number;
  }
  if (flags != 0) join(text, hexNumber(flags), "|");
  return text.empty() ? "0" : text;
}

std::string ipText(int family, const void* address) {
  char text[INET6_ADDRSTRLEN] = "";
  inet_ntop(family, address, text, sizeof text);
  return text;
}

std::string maskText(uint32_t mask) {
  uint32_t bits = ntohl(mask);
  int length = std::countl_one(bits);
  bool whole = length == std::popcount(bits);
  return "/" + (whole ? std::to_string(length) : ipText(AF_INET, &mask));
}

std::string hexText(std::span<const unsigned char> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (unsigned char byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

std::string answerText(int64_t answer) {
  if (answer >= 0) return std::to_string(answer);
  const char* name = strerrorname_np(static_cast<int>(-answer));
  return name ? name : std::to_string(answer);
}

std::string wordsText(std::span<const std::string> words) {
  std::string text;
  for (const std::string& word : words) join(text, quoted(word), " ");
  return text;
}

}  // namespace ctl
