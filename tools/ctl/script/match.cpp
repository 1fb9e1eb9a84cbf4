// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/script/match.h"

#include <algorithm>

#include "tools/ctl/values.h"

namespace ctl {
namespace {

using Words = std::vector<std::string>;

constexpr size_t kDeepest = 4;  // words of a command, at most

struct Alias {
  const char* other;
  const char* word;
};
constexpr Alias kAliases[] = {{"del", "delete"}, {"del", "remove"},    {"rm", "delete"},    {"rm", "remove"},
                              {"ls", "list"},    {"delete", "remove"}, {"remove", "delete"}};

bool mayBeAlias(const std::string& word) {
  return std::any_of(std::begin(kAliases), std::end(kAliases),
                     [&word](const Alias& alias) { return word == alias.other; });
}

bool isNumber(const std::string& word) {
  return word.size() > 1 && word.find_first_not_of("0123456789", 1) == std::string::npos;
}

bool looksLikeOption(const std::string& word) { return word.size() > 1 && word[0] == '-' && !isNumber(word); }

bool within(const Type& type, double number) { return number >= type.least && number <= type.most; }

// What needs no more than the word itself; the rest is refused where the word becomes a value.
bool takesWord(const Type& type, const std::string& word) {
  int number = 0;
  double seconds = 0;
  switch (type.form) {
    case Form::kWord: return findName(type.words, word) != nullptr;
    case Form::kNumber: return readNumber(word, number) && within(type, number);
    case Form::kSeconds: return readSeconds(word, seconds) && within(type, seconds);
    default: return true;
  }
}

bool leftToTheParser(const Words& words) {
  return std::any_of(words.begin(), words.end(), [](const std::string& word) {
    return word == "--help" || word == "-h" || word == "--version" || word == "--";
  });
}

// One row and the words behind its own: each option finds its value, the others fill the values in their order.
class Filling {
 public:
  Filling(const std::vector<Value>& values, Given& given) : values_(values), given_(given) {
    given_.assign(values.size(), {});
  }

  // The complaint, empty when the row takes them.
  std::string fill(const Words& words, size_t from) {
    for (at_ = from; at_ < words.size() && complaint_.empty(); ++at_) take(words);
    if (complaint_.empty()) findMissing();
    return complaint_;
  }

 private:
  void take(const Words& words) {
    const std::string& word = words[at_];
    if (looksLikeOption(word)) return takeOption(words);
    const size_t value = nextPlain();
    if (value == values_.size()) {
      complaint_ = word + ": one word too many";
    } else {
      put(value, word);
    }
  }

  void takeOption(const Words& words) {
    const std::string& word = words[at_];
    const size_t equals = word.starts_with("--") ? word.find('=') : std::string::npos;
    const size_t value = indexOf(word.substr(0, equals));
    if (value == values_.size()) {
      complaint_ = word + ": no such option";
    } else if (!given_[value].empty()) {
      complaint_ = word + ": given twice";
    } else if (values_[value].type.form == Form::kFlag) {
      equals == std::string::npos ? given_[value].push_back("true") : refuse(value, word);
    } else {
      takeValue(words, value, equals);
    }
  }

  void takeValue(const Words& words, size_t value, size_t equals) {
    if (equals != std::string::npos) return put(value, words[at_].substr(equals + 1));
    const bool there = at_ + 1 < words.size();
    if (values_[value].wordless && (!there || looksLikeOption(words[at_ + 1]))) return;
    if (!there) {
      complaint_ = words[at_] + ": its value is missing";
    } else {
      put(value, words[++at_]);
    }
  }

  void put(size_t value, const std::string& word) {
    if (!takesWord(values_[value].type, word)) return refuse(value, word);
    given_[value].push_back(word);
  }

  void refuse(size_t value, const std::string& word) {
    complaint_ = word + ": " + values_[value].name + " takes " + typeText(values_[value].type);
  }

  size_t indexOf(const std::string& name) const {
    size_t i = 0;
    while (i < values_.size() && !(values_[i].isOption() && values_[i].name == name)) ++i;
    return i;
  }

  size_t nextPlain() const {
    size_t i = 0;
    while (i < values_.size() && (values_[i].isOption() || (!values_[i].several && !given_[i].empty()))) ++i;
    return i;
  }

  void findMissing() {
    for (size_t i = 0; i < values_.size(); ++i) {
      if (values_[i].needed && given_[i].empty()) complaint_ = values_[i].name + " is required";
      if (!complaint_.empty()) return;
    }
  }

  const std::vector<Value>& values_;
  Given& given_;
  size_t at_ = 0;
  std::string complaint_;
};

const std::vector<Value>& sharedValues() {
  static const std::vector<Value> values(sharedOptions().begin(), sharedOptions().end());
  return values;
}

// Takes the shared options out of the line, whose place is anywhere. The last of an option counts.
std::string takeShared(Words& words, Given& shared) {
  const std::vector<Value>& values = sharedValues();
  shared.assign(values.size(), {});
  Words rest;
  for (size_t at = 0; at < words.size(); ++at) {
    if (!words[at].starts_with("--")) {
      rest.push_back(std::move(words[at]));
      continue;
    }
    const size_t equals = words[at].find('=');
    const auto value = std::find_if(values.begin(), values.end(),
                                    [&](const Value& one) { return words[at].compare(0, equals, one.name) == 0; });
    if (value == values.end()) {
      rest.push_back(std::move(words[at]));
      continue;
    }
    Words& given = shared[static_cast<size_t>(value - values.begin())];
    if (value->type.form == Form::kFlag) {
      given = {"true"};
      continue;
    }
    if (equals == std::string::npos && at + 1 == words.size()) return words[at] + ": its value is missing";
    given = {equals == std::string::npos ? words[++at] : words[at].substr(equals + 1)};
    if (!takesWord(value->type, given.front()))
      return given.front() + ": " + value->name + " takes " + typeText(value->type);
  }
  words = std::move(rest);
  return {};
}

std::string joined(const Words& words, size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) text += (i == 0 ? "" : " ") + words[i];
  return text;
}

bool holdsLines(const Command& row) {
  return std::any_of(row.values.begin(), row.values.end(),
                     [](const Value& value) { return value.type.form == Form::kCommandLine; });
}

bool hasScriptOption(const Words& words, size_t from) {
  return std::any_of(words.begin() + static_cast<std::ptrdiff_t>(from), words.end(),
                     [](const std::string& word) { return looksLikeOption(word) && !word.starts_with("--"); });
}

}  // namespace

Matcher::Matcher(const std::vector<Command>& rows) {
  for (const Command& row : rows) rows_[joined(row.words, row.words.size())].push_back(&row);
}

const Matcher::Rows* Matcher::rowsOf(const std::string& words) const {
  const auto found = rows_.find(words);
  return found == rows_.end() ? nullptr : &found->second;
}

const Matcher::Rows* Matcher::longest(const Words& words, size_t& used) const {
  std::string text;
  const Rows* found = nullptr;
  for (size_t i = 0; i < words.size() && i < kDeepest; ++i) {
    text += (i == 0 ? "" : " ") + words[i];
    const Rows* rows = rowsOf(text);
    if (!rows) break;
    found = rows;
    used = i + 1;
  }
  return found;
}

// A word that is none behind the ones in front of it, but has another name that is.
void Matcher::resolve(Words& words, size_t at, std::string& known) const {
  const std::string before = known.empty() ? "" : known + " ";
  if (!rowsOf(before + words[at])) {
    for (const Alias& alias : kAliases) {
      if (words[at] != alias.other || !rowsOf(before + alias.word)) continue;
      words[at] = alias.word;
      break;
    }
  }
  known = before + words[at];
}

// Options may stand in front of a command and between its words.
Words Matcher::withoutAliases(const Words& given) const {
  Words words = given;
  std::string known;
  for (size_t at = 0; at < words.size() && at < kDeepest + 2; ++at) {
    if (words[at].starts_with("-")) continue;
    const Rows* rows = rowsOf(known);
    if (rows && holdsLines(*rows->front())) break;
    resolve(words, at, known);
    if (!rowsOf(known)) break;
  }
  return words;
}

Match Matcher::match(const Words& given) const {
  Match match;
  if (leftToTheParser(given)) return match;
  Words words = given;
  match.complaint = takeShared(words, match.shared);
  if (!match.complaint.empty()) return match;
  size_t used = 0;
  const Rows* rows = longest(words, used);
  if (rows && used < words.size() && mayBeAlias(words[used])) {
    words = withoutAliases(words);
    rows = longest(words, used);
  }
  if (!rows) return match;
  const bool ofScript = hasScriptOption(words, used);
  for (const Command* row : *rows) {
    if (!row->run || holdsLines(*row)) continue;
    const std::string complaint = Filling(row->values, match.given).fill(words, used);
    if (complaint.empty()) {
      match.row = row;
      match.complaint.clear();
      return match;
    }
    if (match.near && row->script != ofScript) continue;
    match.near = row;
    match.complaint = complaint;
  }
  return match;
}

const Matcher& matcher() {
  static const Matcher whole(grammar());
  return whole;
}

}  // namespace ctl
