// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/place.h"

#include <algorithm>

namespace ctl {
namespace {

class Walk {
 public:
  explicit Walk(const std::vector<Command>& rows) : rows_(rows) {
    for (const Argument<Session>& option : sharedOptions()) place_.options.push_back(&option);
  }

  void pass(const std::string& word) {
    if (open_) {
      open_ = nullptr;
    } else if (isOption(word)) {
      passOption(word);
    } else if (const Command* row = values_ == 0 ? below(word) : nullptr) {
      enter(*row);
    } else {
      ++values_;
    }
  }

  Place end() {
    place_.next = open_ ? open_ : value();
    if (open_) place_.options.clear();
    if (open_ || values_ > 0) return place_;
    for (const Command& row : rows_) {
      if (isBelow(row)) place_.below.push_back(&row);
    }
    return place_;
  }

  // Whether the rest of the line is a line of its own.
  bool nested() const {
    const Value* next = open_ ? nullptr : value();
    return next && next->type.form == Form::kCommandLine;
  }

 private:
  // One dash begins an option only where the row has it: a number may be below 0.
  bool isOption(const std::string& word) const {
    if (word.starts_with("--")) return true;
    return word.starts_with("-") && std::any_of(place_.options.begin(), place_.options.end(),
                                                [&word](const Value* one) { return one->name == word; });
  }

  bool isBelow(const Command& row) const {
    const size_t depth = place_.row ? place_.row->words.size() : 0;
    return !row.hidden && row.words.size() == depth + 1 && !isSecond(row) &&
           (!place_.row || std::equal(place_.row->words.begin(), place_.row->words.end(), row.words.begin()));
  }

  // The row of saved scripts behind the one of the same words.
  bool isSecond(const Command& row) const {
    return row.script && &row != rows_.data() && (&row - 1)->words == row.words;
  }

  const Command* below(const std::string& word) const {
    for (const Command& row : rows_) {
      if (isBelow(row) && row.words.back() == word) return &row;
    }
    return nullptr;
  }

  void enter(const Command& row) {
    place_.row = &row;
    addOptions(row);
    const Command* second = &row + 1;
    if (second != rows_.data() + rows_.size() && isSecond(*second)) addOptions(*second);
  }

  void addOptions(const Command& row) {
    for (const Value& value : row.values) {
      if (value.isOption()) place_.options.push_back(&value);
    }
  }

  // "--kbps=512" has its value with it.
  void passOption(const std::string& word) {
    const std::string name = word.substr(0, word.find('='));
    auto option = std::find_if(place_.options.begin(), place_.options.end(),
                               [&name](const Value* one) { return one->name == name; });
    if (option == place_.options.end()) return;
    if (name == word && (*option)->type.form != Form::kFlag) open_ = *option;
    place_.options.erase(option);
  }

  const Value* value() const {
    if (!place_.row) return nullptr;
    size_t number = 0;
    for (const Value& value : place_.row->values) {
      if (!value.isOption() && (value.several || number++ == values_)) return &value;
    }
    return nullptr;
  }

  const std::vector<Command>& rows_;
  Place place_;
  const Value* open_ = nullptr;  // the option whose value comes next
  size_t values_ = 0;            // words that were values of the row
};

}  // namespace

Place placeBehind(const std::vector<Command>& rows, const std::vector<std::string>& words) {
  Walk walk(rows);
  for (size_t i = 0; i < words.size(); ++i) {
    if (walk.nested()) return placeBehind(rows, {words.begin() + static_cast<std::ptrdiff_t>(i), words.end()});
    walk.pass(words[i]);
  }
  return walk.end();
}

}  // namespace ctl
