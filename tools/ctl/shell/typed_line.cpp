// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/typed_line.h"

#include <cstdlib>

#include "tools/common/plain_text.h"
#include "tools/ctl/session.h"

namespace ctl {
namespace {

bool blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool quote(char c) { return c == '"' || c == '\''; }

}  // namespace

TypedLine::TypedLine(const std::string& line) : line_(line) {
  for (size_t at = 0; at < line_.size();) take(at);
}

void TypedLine::take(size_t& at) {
  if (blank(line_[at])) {
    ++at;
  } else if (line_[at] == '#') {
    at = line_.size();
  } else if (line_[at] == '|') {
    ++at;
    parts_.emplace_back();
  } else {
    takeWord(at);
  }
}

void TypedLine::takeWord(size_t& at) {
  TypedWord word = {.begin = at};
  while (at < line_.size() && !blank(line_[at]) && line_[at] != '|') {
    const char c = line_[at++];
    if (!quote(c)) {
      word.text += c;
      continue;
    }
    word.open = c;
    --at;
    takeQuoted(at, word.text);
    if (at == line_.size() || line_[at] != c) break;
    word.open = 0;
    ++at;
  }
  parts_.back().push_back(word);
}

// Up to the quote that ends, or to the end of the line.
void TypedLine::takeQuoted(size_t& at, std::string& text) {
  const char mark = line_[at++];
  while (at < line_.size() && line_[at] != mark) {
    char c = line_[at++];
    if (mark == '"' && c == '\\' && at < line_.size()) {
      c = line_[at++];
      if (c == 'x' && at + 2 <= line_.size()) {
        c = static_cast<char>(strtoul(line_.substr(at, 2).c_str(), nullptr, 16));
        at += 2;
      } else if (c == 'n' || c == 't') {
        c = c == 'n' ? '\n' : '\t';
      }
    }
    text += c;
  }
}

Words TypedLine::wordsOf(size_t part) const {
  Words words;
  for (const TypedWord& word : parts_[part]) words.push_back(word.text);
  return words;
}

std::vector<Words> TypedLine::filters() const {
  std::vector<Words> filters;
  for (size_t part = 1; part < parts_.size(); ++part) filters.push_back(wordsOf(part));
  return filters;
}

char TypedLine::openQuote() const { return parts_.back().empty() ? char{} : parts_.back().back().open; }

void TypedLine::requirePlain() const {
  for (char c : line_) {
    if (!blank(c) && tools::hasControlCharacter({&c, 1})) throw Refusal(kUsage, "the line holds a control character");
  }
  if (openQuote()) throw Refusal(kUsage, std::string("a quote does not end: ") + openQuote());
}

TypedWord TypedLine::typed() const {
  const bool behindBlank = line_.empty() || (blank(line_.back()) && !openQuote());
  if (parts_.back().empty() || behindBlank) return {.begin = line_.size()};
  return parts_.back().back();
}

Words TypedLine::before() const {
  Words words = wordsOf(parts_.size() - 1);
  if (typed().begin < line_.size()) words.pop_back();
  return words;
}

}  // namespace ctl
