// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/lint/fields.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "kestrove/codes.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/session.h"

namespace ctl::lint {
namespace {

constexpr size_t kShown = 40;
constexpr char kBlanks[] = " \t";

using Found = std::optional<Fault>;

std::string_view trimmed(std::string_view value) { return value.substr(0, value.find_last_not_of(kBlanks) + 1); }

std::optional<int64_t> wholeNumber(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc::result_out_of_range) return text[0] == '-' ? INT64_MIN : INT64_MAX;
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

int64_t storedNumber(const std::string& bytes) {
  if (bytes.size() == 1) return static_cast<uint8_t>(bytes[0]);
  int32_t number = 0;
  memcpy(&number, bytes.data(), std::min(bytes.size(), sizeof number));
  return number;
}

Found numberFault(std::string_view value, const std::string& bytes) {
  const std::optional<int64_t> meant = wholeNumber(value);
  const std::string stored = std::to_string(storedNumber(bytes));
  if (meant == storedNumber(bytes)) return {};
  if (value.empty()) return Fault{0, kChanged, "no value: 0 is stored"};
  return Fault{0, meant ? kChanged : kCut, quotedValue(value) + " is stored as " + stored};
}

// 2 is what a save writes for a switch that is neither.
Found switchFault(std::string_view value, const std::string& bytes) {
  constexpr int64_t kOfFile[] = {-1, 1, 0, 2};
  const auto stored = std::min<size_t>(static_cast<uint8_t>(bytes[0]), 3);
  constexpr const char* kNames[] = {"nothing", "on", "off", "neither on nor off"};
  if (wholeNumber(value) == kOfFile[stored]) return {};
  if (value.empty()) return Fault{0, kChanged, "no value: off is stored"};
  return Fault{0, kChanged, quotedValue(value) + " is stored as " + kNames[stored]};
}

Found textFault(std::string_view value, const std::string& bytes) {
  if (value.size() > bytes.size()) {
    return Fault{bytes.size(), kCut, "cut to " + std::to_string(bytes.size()) + " characters"};
  }
  for (size_t at = 0; at < value.size(); ++at) {
    const auto byte = static_cast<unsigned char>(value[at]);
    if (byte < 0x20 || byte == 0x7F) {
      return Fault{at, kControl, "the control character " + tools::escaped(value.substr(at, 1)) + " is stored"};
    }
  }
  return {};
}

Found addressFault(std::string_view value, const std::string& bytes) {
  uint32_t address = 0;
  memcpy(&address, bytes.data(), std::min(bytes.size(), sizeof address));
  const std::string stored = addressText(address);
  if (value == stored) return {};
  if (value.empty()) return Fault{0, kDropped, "no value: nothing is stored"};
  if (address == 0) return Fault{0, kDropped, quotedValue(value) + " is no address: nothing is stored"};
  return Fault{0, kChanged, quotedValue(value) + " is stored as " + stored};
}

}  // namespace

std::string quotedValue(std::string_view value) {
  return "\"" + tools::escaped(value.substr(0, kShown)) + (value.size() > kShown ? "..." : "") + "\"";
}

std::optional<Fault> fieldFault(const tools::ConfigKeyword& keyword, std::string_view value, const std::string& bytes) {
  switch (keyword.form) {
    case tools::ConfigForm::kNumber: return numberFault(trimmed(value), bytes);
    case tools::ConfigForm::kSwitch: return switchFault(trimmed(value), bytes);
    case tools::ConfigForm::kText: return textFault(value, bytes);
    case tools::ConfigForm::kAddress: return addressFault(trimmed(value), bytes);
    case tools::ConfigForm::kRow: return keyword.columns[0] == 'n' ? numberFault(trimmed(value), bytes) : Found{};
  }
  return {};
}

}  // namespace ctl::lint
