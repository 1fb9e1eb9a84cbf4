// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/lint/config_line.h"

#include <algorithm>

namespace ctl::lint {
namespace {

constexpr size_t kLongestLine = 510;
constexpr char kSeparators[] = " \t\n";

size_t startOfWord(std::string_view text, size_t from) {
  return std::min(text.find_first_not_of(kSeparators, from), text.size());
}

size_t endOfWord(std::string_view text, size_t from) {
  return std::min(text.find_first_of(kSeparators, from), text.size());
}

Word wordBetween(std::string_view text, size_t start, size_t end) {
  return {text.substr(start, end - start), start + 1};
}

void trimOne(std::string_view& value) {
  if (!value.empty() && std::string_view(kSeparators).find(value.back()) != std::string_view::npos) {
    value.remove_suffix(1);
  }
}

}  // namespace

ConfigLine readConfigLine(std::string_view whole) {
  ConfigLine line;
  line.text = whole.substr(0, std::min(whole.find('\0'), kLongestLine));
  if (line.text.size() < whole.size()) line.unread = line.text.size() + 1;
  line.zero = line.unread != 0 && whole[line.text.size()] == '\0';
  const size_t start = startOfWord(line.text, 0);
  if (start == line.text.size() || line.text[start] == '#') return line;
  const size_t end = endOfWord(line.text, start);
  line.keyword = wordBetween(line.text, start, end);
  line.value = wordBetween(line.text, startOfWord(line.text, end), line.text.size());
  trimOne(line.value.text);
  return line;
}

std::vector<Word> wordsOf(const Word& value) {
  std::vector<Word> words;
  for (size_t end = 0, start; (start = startOfWord(value.text, end)) < value.text.size();) {
    end = endOfWord(value.text, start);
    words.push_back({value.text.substr(start, end - start), value.column + start});
  }
  return words;
}

}  // namespace ctl::lint
