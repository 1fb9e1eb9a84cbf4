// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/watch/spark.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace ctl {
namespace {

constexpr size_t kHeights = 8;
constexpr std::array<const char*, kHeights> kBlocks = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
constexpr std::array<const char*, kHeights> kSigns = {"_", ".", ":", "-", "=", "+", "*", "#"};

size_t heightOf(double value, double highest) {
  if (highest <= 0) return 0;
  const auto height = static_cast<size_t>(std::lround(value / highest * (kHeights - 1)));
  return std::min(height, kHeights - 1);
}

}  // namespace

std::string sparkLine(const std::deque<std::optional<double>>& values, size_t width, bool wide) {
  const auto first = values.end() - static_cast<std::ptrdiff_t>(std::min(width, values.size()));
  double highest = 0;
  for (auto value = first; value != values.end(); ++value) highest = std::max(highest, value->value_or(0));
  std::string line;
  for (auto value = first; value != values.end(); ++value) {
    line += *value ? (wide ? kBlocks : kSigns)[heightOf(**value, highest)] : " ";
  }
  return line;
}

bool terminalTakesUtf8() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* value = getenv(name);
    if (!value || !*value) continue;
    const std::string locale = value;
    return locale.find("UTF-8") != std::string::npos || locale.find("utf8") != std::string::npos;
  }
  return false;
}

std::string shortNumber(double value) {
  constexpr const char* kLetters[] = {"", "k", "M", "G", "T", "P", "E"};
  size_t letter = 0;
  for (; value >= 999.5 && letter + 1 < std::size(kLetters); ++letter) value /= 1000;
  const int digits = value >= 99.95 || value == std::floor(value) ? 0 : value >= 9.995 ? 1 : 2;
  char text[32];
  snprintf(text, sizeof text, "%.*f %s", digits, value, kLetters[letter]);
  return text;
}

}  // namespace ctl
