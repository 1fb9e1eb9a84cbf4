// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/script/script_file.h"

#include "tools/common/plain_text.h"
#include "tools/ctl/session.h"
#include "tools/ctl/settings/quoting.h"

namespace ctl {
namespace {

bool isBlank(char one) { return one == ' ' || one == '\t'; }

// A carriage return in front of the end belongs to it.
void withoutReturn(std::string& line) {
  if (!line.empty() && line.back() == '\r') line.pop_back();
}

std::string untabbed(std::string line) {
  for (char& one : line) {
    if (one == '\t') one = ' ';
  }
  return line;
}

// Up to a remark behind it, which begins outside of quotes and behind a blank.
std::string withoutRemark(const std::string& line) {
  char mark = 0;
  for (size_t at = 0; at < line.size(); ++at) {
    const char one = line[at];
    if (mark == '"' && one == '\\') {
      ++at;
    } else if (mark) {
      if (one == mark) mark = 0;
    } else if (one == '"' || one == '\'') {
      mark = one;
    } else if (one == '#' && at > 0 && line[at - 1] == ' ') {
      return line.substr(0, at);
    }
  }
  return line;
}

bool hasQuotes(const std::string& line) { return line.find_first_of("\"'\\") != std::string::npos; }

std::vector<std::string> plainWords(const std::string& line) {
  std::vector<std::string> words;
  for (size_t at = 0; at < line.size();) {
    at = line.find_first_not_of(' ', at);
    if (at == std::string::npos || line[at] == '#') break;
    const size_t end = std::min(line.find(' ', at), line.size());
    words.emplace_back(line, at, end - at);
    at = end;
  }
  return words;
}

}  // namespace

bool LineReader::next(std::string& line) {
  line.clear();
  int one = 0;
  while ((one = getc_unlocked(in_)) != EOF && one != '\n') {
    if (line.size() <= kLongestLine) line += static_cast<char>(one);
  }
  if (one == EOF && line.empty()) return false;
  withoutReturn(line);
  return true;
}

bool LineReader::failed() const { return ferror(in_) != 0; }

bool isBlankLine(const std::string& line) {
  for (char one : line) {
    if (!isBlank(one)) return one == '#';
  }
  return true;
}

std::vector<std::string> wordsOfLine(const std::string& given) {
  if (given.size() > kLongestLine) {
    throw Refusal(kUsage, "the line is longer than " + std::to_string(kLongestLine) + " characters");
  }
  if (isBlankLine(given)) return {};
  const std::string line = untabbed(given);
  if (tools::hasControlCharacter(line)) throw Refusal(kUsage, "the line holds a control character");
  return hasQuotes(line) ? wordsIn(withoutRemark(line)) : plainWords(line);
}

}  // namespace ctl
