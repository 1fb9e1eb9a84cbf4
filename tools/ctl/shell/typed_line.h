// SPDX-License-Identifier: Apache-2.0
// A line of the shell as it is typed: words with quotes, and filters behind bars.
#pragma once

#include <string>
#include <vector>

namespace ctl {

struct TypedWord {
  std::string text = {};  // without the quotes
  size_t begin = 0;       // in the line
  char open = 0;          // the quote that does not end
};

using Words = std::vector<std::string>;

class TypedLine {
 public:
  // Single quotes keep everything, double quotes know \" \\ \n \t and \xHH. A word that begins with "#"
  // ends the line.
  explicit TypedLine(const std::string& line);

  Words command() const { return wordsOf(0); }
  std::vector<Words> filters() const;
  bool empty() const { return parts_.size() == 1 && parts_[0].empty(); }
  // Throws kUsage where a quote does not end, and for a control character.
  void requirePlain() const;

  // What stands in front of the word that is being typed, and that word; empty behind a blank.
  bool inFilter() const { return parts_.size() > 1; }
  Words before() const;
  TypedWord typed() const;

 private:
  Words wordsOf(size_t part) const;
  void take(size_t& at);
  void takeWord(size_t& at);
  void takeQuoted(size_t& at, std::string& text);
  char openQuote() const;

  std::string line_;
  std::vector<std::vector<TypedWord>> parts_ = {{}};
};

}  // namespace ctl
