// SPDX-License-Identifier: Apache-2.0
// Words of a command line as values. What makes no sense throws kUsage with the word in front of the reason.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/ctl/type.h"

namespace ctl {

struct Address {
  std::string text;      // as it was given
  uint32_t version = 0;  // SHM_FAMILY_IPV4 or SHM_FAMILY_IPV6
  uint32_t address = 0;  // of IPv4; network byte order
  uint8_t address6[16] = {};
};

// An address with its length; without one it is a single host.
struct Prefix {
  std::string text;  // as it was given
  Address host;
  uint32_t mask = 0;  // of IPv4; network byte order
  uint32_t length6 = 0;

  uint32_t version() const { return host.version; }
};

// The first and the last; without a last one there is only the first.
struct Ports {
  int first = 0;
  std::optional<int> last = {};
};

// A dotted quad, checked strictly, with what the library says of it.
uint32_t parseAddress(const std::string& text);
// The mask of a prefix length or of a dotted mask.
uint32_t parseMask(const std::string& text);
// Both families where the type takes both: a colon makes it IPv6.
Address parseAddress(const std::string& text, Family family);
// ADDRESS[/LENGTH]; for IPv4 a dotted mask is as good as a length.
Prefix parsePrefix(const std::string& text, Family family);
// A word of the vocabulary, or where the type takes numbers, too, one of these.
int parseWord(const Type& type, const std::string& text);
// Digits alone; none where there is anything else.
std::optional<uint64_t> readDigits(const std::string& text);
// A rate in bits per second: digits of that many of them, or with k, M or G a number of thousands, millions or thousand
// millions.
std::optional<uint64_t> readRate(const std::string& text, uint64_t factor);
// False when it is no number. Whether it is within the type's limits is looked at before.
bool readNumber(const std::string& text, int& out);
bool readSeconds(const std::string& text, double& out);

// One word of the line into a member of the record that the handler gets.
void convert(const Type& type, const std::string& text, std::string& out);
void convert(const Type& type, const std::string& text, int& out);
void convert(const Type& type, const std::string& text, uint32_t& out);
void convert(const Type& type, const std::string& text, bool& out);
void convert(const Type& type, const std::string& text, double& out);
void convert(const Type& type, const std::string& text, Address& out);
void convert(const Type& type, const std::string& text, Prefix& out);
void convert(const Type& type, const std::string& text, Ports& out);

template <typename Value>
void convert(const Type& type, const std::string& text, std::optional<Value>& out) {
  convert(type, text, out.emplace());
}

template <typename Value>
void convert(const Type& type, const std::string& text, std::vector<Value>& out) {
  convert(type, text, out.emplace_back());
}

// What stands in a record that the line says nothing of; empty where that is nothing to show.
std::string presetText(const Type& type, int value);
std::string presetText(const Type& type, uint32_t value);
std::string presetText(const Type& type, double value);
template <typename Value>
std::string presetText(const Type&, const Value&) {
  return {};
}

}  // namespace ctl
