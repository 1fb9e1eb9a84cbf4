// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/values.h"

#include <arpa/inet.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "CLI/TypeTools.hpp"
#include "kestrove/kestrove.h"
#include "tools/ctl/session.h"

namespace ctl {
namespace {

bool digits(const std::string& text, size_t most) {
  return !text.empty() && text.size() <= most && text.find_first_not_of("0123456789") == std::string::npos;
}

void parseAddress6(const std::string& text, uint8_t (&out)[16]) {
  if (parseIpv6Address(text.c_str(), out) != 0) {
    throw Refusal(kUsage, text + ": " + shm_strerror(SHM_EIPV6), SHM_EIPV6);
  }
}

uint32_t parseLength6(const std::string& text) {
  if (digits(text, 3) && std::stoi(text) <= 128) return static_cast<uint32_t>(std::stoi(text));
  throw Refusal(kUsage, text + ": no prefix length (0 to 128)");
}

bool isVersion6(const std::string& text, Family family) {
  return family == Family::kBoth ? text.find(':') != std::string::npos : family == Family::kIpv6;
}

// The one that means every address, in the family that is asked for.
std::string withoutNames(const std::string& text, Family family) {
  if (text != "default") return text;
  return family == Family::kIpv6 ? "::/0" : "0.0.0.0/0";
}

// A number of the type's unit, or a rate with a suffix that makes a whole number of it.
int parseRate(const Type& type, const std::string& text) {
  constexpr uint64_t kBitsPerKilobit = 1000;
  const std::optional<uint64_t> rate = readRate(text, kBitsPerKilobit);
  if (!rate || *rate % kBitsPerKilobit != 0 || *rate / kBitsPerKilobit > static_cast<uint64_t>(type.most)) {
    throw Refusal(kUsage, text + ": no rate (" + typeText(type) + ", or with k, M or G)");
  }
  return static_cast<int>(*rate / kBitsPerKilobit);
}

// A number of the store without its word: the same bits, with a sign or without.
std::optional<int> readCode(const std::string& text) {
  errno = 0;
  char* end = nullptr;
  const long long value = strtoll(text.c_str(), &end, 10);
  if (text.empty() || *end || errno != 0 || value < INT32_MIN || value > UINT32_MAX) return {};
  return static_cast<int>(static_cast<uint32_t>(value));
}

int parsePort(const std::string& word, const std::string& text) {
  if (digits(word, 5) && std::stoi(word) <= 65535) return std::stoi(word);
  throw Refusal(kUsage, text + ": no port (0 to 65535, or two with a dash between)");
}

}  // namespace

uint32_t parseAddress(const std::string& text) {
  char copy[64] = {};
  uint32_t address = 0;
  if (text.size() < sizeof copy) {
    memcpy(copy, text.data(), text.size());
    if (parseIpv4Address(copy, &address) == 0) return address;
  } else {
    shm_errno = SHM_EINVAL;
  }
  throw Refusal(kUsage, text + ": " + shm_strerror(static_cast<int>(shm_errno)), static_cast<int>(shm_errno));
}

uint32_t parseMask(const std::string& text) {
  if (!digits(text, 2)) return parseAddress(text);
  const int length = std::stoi(text);
  if (length > 32) throw Refusal(kUsage, text + ": " + shm_strerror(SHM_EMASK), SHM_EMASK);
  return length == 0 ? 0 : htonl(~0u << (32 - length));
}

Address parseAddress(const std::string& text, Family family) {
  Address address = {.text = text,
                     .version = isVersion6(text, family) ? uint32_t{SHM_FAMILY_IPV6} : uint32_t{SHM_FAMILY_IPV4}};
  if (address.version == SHM_FAMILY_IPV6) {
    parseAddress6(text, address.address6);
  } else {
    address.address = parseAddress(text);
  }
  return address;
}

Prefix parsePrefix(const std::string& given, Family family) {
  const std::string text = withoutNames(given, family);
  const size_t slash = text.find('/');
  Prefix prefix = {.text = text, .host = parseAddress(text.substr(0, slash), family)};
  const bool whole = slash == std::string::npos;
  const std::string length = whole ? "" : text.substr(slash + 1);
  if (!whole && length.empty()) throw Refusal(kUsage, text + ": no prefix length behind the slash");
  if (prefix.version() == SHM_FAMILY_IPV6) {
    prefix.length6 = whole ? 128 : parseLength6(length);
  } else {
    prefix.mask = whole ? ~0u : parseMask(length);
  }
  return prefix;
}

int parseWord(const Type& type, const std::string& text) {
  if (const NamedNumber* word = findName(type.words, text)) return word->number;
  if (type.form == Form::kName && digits(text, 9) && std::stoi(text) <= type.most) return std::stoi(text);
  const std::optional<int> code = type.form == Form::kName && type.most == INT_MAX ? readCode(text) : std::nullopt;
  if (code) return *code;
  throw Refusal(kUsage, text + ": no " + type.meant);
}

std::optional<uint64_t> readDigits(const std::string& text) {
  if (!digits(text, 18)) return {};
  return std::stoull(text);
}

std::optional<uint64_t> readRate(const std::string& text, uint64_t factor) {
  struct Suffix {
    char letter;
    uint64_t factor;
  };
  constexpr Suffix kSuffixes[] = {{'k', 1000}, {'M', 1000000}, {'G', 1000000000}};
  std::string number = text;
  for (const Suffix& suffix : kSuffixes) {
    if (text.empty() || text.back() != suffix.letter) continue;
    number.pop_back();
    factor = suffix.factor;
  }
  const std::optional<uint64_t> value = number.size() > 10 ? std::nullopt : readDigits(number);
  return value ? std::optional(*value * factor) : std::nullopt;
}

bool readNumber(const std::string& text, int& out) { return CLI::detail::lexical_cast(text, out); }

bool readSeconds(const std::string& text, double& out) { return CLI::detail::lexical_cast(text, out); }

void convert(const Type&, const std::string& text, std::string& out) { out = text; }

void convert(const Type& type, const std::string& text, int& out) {
  if (type.form == Form::kRate) {
    out = parseRate(type, text);
  } else if (type.form != Form::kNumber) {
    out = parseWord(type, text);
  } else if (!readNumber(text, out)) {
    throw Refusal(kUsage, text + ": no number");
  }
}

void convert(const Type& type, const std::string& text, uint32_t& out) {
  int number = 0;
  convert(type, text, number);
  out = static_cast<uint32_t>(number);
}

void convert(const Type&, const std::string&, bool& out) { out = true; }

void convert(const Type&, const std::string& text, double& out) {
  if (!readSeconds(text, out)) throw Refusal(kUsage, text + ": no number of seconds");
}

void convert(const Type& type, const std::string& text, Address& out) { out = parseAddress(text, type.family); }

void convert(const Type& type, const std::string& text, Prefix& out) { out = parsePrefix(text, type.family); }

// A number alone may be any: what makes no port is looked at with the rule.
void convert(const Type&, const std::string& text, Ports& out) {
  if (readNumber(text, out.first)) return;
  const size_t dash = text.find('-');
  out.first = parsePort(text.substr(0, dash), text);
  if (dash != std::string::npos) out.last = parsePort(text.substr(dash + 1), text);
}

std::string presetText(const Type& type, int value) {
  return type.words.empty() ? std::to_string(value) : nameOf(type.words, static_cast<uint32_t>(value));
}

std::string presetText(const Type& type, uint32_t value) { return presetText(type, static_cast<int>(value)); }

std::string presetText(const Type&, double value) {
  char text[32];
  snprintf(text, sizeof text, "%g", value);
  return text;
}

}  // namespace ctl
