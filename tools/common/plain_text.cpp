// SPDX-License-Identifier: Apache-2.0
#include "tools/common/plain_text.h"

#include <algorithm>
#include <vector>

namespace tools {
namespace {

unsigned char byteAt(std::string_view text, size_t at) { return static_cast<unsigned char>(text[at]); }

bool follows(std::string_view text, size_t at) { return at < text.size() && (byteAt(text, at) & 0xC0) == 0x80; }

// Bytes of the character that begins here; 0 when it is no UTF-8.
size_t characterLength(std::string_view text, size_t at) {
  const unsigned char first = byteAt(text, at);
  const size_t length = first < 0x80 ? 1 : first >= 0xC2 && first < 0xE0 ? 2 : first >= 0xE0 && first < 0xF0 ? 3 : 4;
  if ((first >= 0x80 && first < 0xC2) || first > 0xF4) return 0;
  for (size_t i = 1; i < length; ++i) {
    if (!follows(text, at + i)) return 0;
  }
  return length;
}

bool control(std::string_view text, size_t at) {
  const unsigned char first = byteAt(text, at);
  if (first < 0x20 || first == 0x7F) return true;
  return first == 0xC2 && at + 1 < text.size() && byteAt(text, at + 1) < 0xA0 && follows(text, at + 1);
}

void appendEscaped(std::string& out, std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  for (char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    out += {'\\', 'x', kDigits[value >> 4], kDigits[value & 15]};
  }
}

char small(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

bool hasControlCharacter(std::string_view text) {
  for (size_t at = 0; at < text.size(); ++at) {
    if (control(text, at)) return true;
  }
  return false;
}

std::string escaped(std::string_view text) {
  std::string out;
  for (size_t at = 0; at < text.size();) {
    const size_t length = characterLength(text, at);
    const std::string_view bytes = text.substr(at, std::max<size_t>(length, 1));
    if (length == 0 || control(text, at)) {
      appendEscaped(out, bytes);
    } else {
      out += bytes;
    }
    at += bytes.size();
  }
  return out;
}

std::string refusedWord(const std::vector<std::string>& words) {
  for (size_t i = 0; i < words.size(); ++i) {
    if (!hasControlCharacter(words[i])) continue;
    return "word " + std::to_string(i + 1) + " of the command line holds a control character: " + escaped(words[i]);
  }
  return {};
}

std::string refusedWord(int argc, char** argv) {
  return refusedWord(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
}

unsigned distance(std::string_view one, std::string_view other) {
  std::vector<std::vector<unsigned>> steps(one.size() + 1, std::vector<unsigned>(other.size() + 1));
  for (size_t i = 0; i <= one.size(); ++i) {
    for (size_t j = 0; j <= other.size(); ++j) {
      if (i == 0 || j == 0) {
        steps[i][j] = static_cast<unsigned>(i + j);
        continue;
      }
      const unsigned wrong = small(one[i - 1]) != small(other[j - 1]);
      steps[i][j] = std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, steps[i - 1][j - 1] + wrong});
      const bool swapped =
          i > 1 && j > 1 && small(one[i - 1]) == small(other[j - 2]) && small(one[i - 2]) == small(other[j - 1]);
      if (swapped) steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
    }
  }
  return steps[one.size()][other.size()];
}

}  // namespace tools
