// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/settings/quoting.h"

#include <cstdio>
#include <cstdlib>

#include "tools/ctl/session.h"

namespace ctl {
namespace {

bool plainCharacter(char c) { return c > ' ' && c < 0x7f && c != '"' && c != '\\' && c != '\'' && c != '|'; }

bool plain(const std::string& word) {
  if (word.empty() || word[0] == '#') return false;
  for (char c : word) {
    if (!plainCharacter(c)) return false;
  }
  return true;
}

void appendEscaped(std::string& text, char c) {
  const auto byte = static_cast<unsigned char>(c);
  if (c == '"' || c == '\\') {
    text += {'\\', c};
  } else if (c == '\n' || c == '\t') {
    text += c == '\n' ? "\\n" : "\\t";
  } else if (byte < ' ' || byte == 0x7f) {
    char escape[5];
    snprintf(escape, sizeof escape, "\\x%02x", byte);
    text += escape;
  } else {
    text += c;
  }
}

class Splitter {
 public:
  explicit Splitter(const std::string& line) : line_(line) {}

  std::vector<std::string> words() {
    for (skipBlanks(); at_ < line_.size(); skipBlanks()) {
      words_.emplace_back();
      while (at_ < line_.size() && !blank(line_[at_])) piece();
    }
    return words_;
  }

 private:
  static bool blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
  void skipBlanks() {
    while (at_ < line_.size() && blank(line_[at_])) ++at_;
  }
  void piece() {
    if (line_[at_] == '"' || line_[at_] == '\'') return quote(line_[at_++]);
    words_.back() += line_[at_++];
  }
  void quote(char mark) {
    while (at_ < line_.size() && line_[at_] != mark) {
      if (mark == '"' && line_[at_] == '\\' && at_ + 1 < line_.size()) {
        ++at_;
        escape();
      } else {
        words_.back() += line_[at_++];
      }
    }
    if (at_ == line_.size()) throw Refusal(kUsage, line_ + ": a quote does not end");
    ++at_;
  }
  void escape() {
    const char c = line_[at_++];
    if (c == 'n' || c == 't') {
      words_.back() += c == 'n' ? '\n' : '\t';
    } else if (c == 'x' && at_ + 2 <= line_.size()) {
      words_.back() += static_cast<char>(strtoul(line_.substr(at_, 2).c_str(), nullptr, 16));
      at_ += 2;
    } else {
      words_.back() += c;
    }
  }

  const std::string& line_;
  size_t at_ = 0;
  std::vector<std::string> words_;
};

}  // namespace

std::string quoted(const std::string& word) {
  if (plain(word)) return word;
  std::string text = "\"";
  for (char c : word) appendEscaped(text, c);
  return text + "\"";
}

std::vector<std::string> wordsIn(const std::string& line) { return Splitter(line).words(); }

}  // namespace ctl
