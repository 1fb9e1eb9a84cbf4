// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/lint/linter.h"

#include <algorithm>
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/lint/fields.h"

namespace ctl::lint {
namespace {

constexpr size_t kMostFindings = 10000;
constexpr char kMethodSeparators[] = " \t+,-";

std::vector<std::string_view> keywordNames() {
  std::vector<std::string_view> names;
  for (const tools::ConfigKeyword& keyword : tools::configKeywords()) names.push_back(keyword.name);
  return names;
}

std::string unknownText(std::string_view word) {
  const std::string near = tools::nearest(word, keywordNames());
  return "unknown keyword " + quotedValue(word) + (near.empty() ? "" : "; did you mean " + near + "?");
}

// The columns that a row of this keyword has, as many as letters.
std::string_view columnsOf(const tools::ConfigKeyword& keyword, const std::vector<Word>& words) {
  const bool six = keyword.name == "MANAGEMENT_ADDR" && !words.empty() && words[0].text == "6";
  return six ? "n6nn" : keyword.columns;
}

struct Drop {
  const char* kind;
  std::string text;
};

std::string codeText(uint32_t code) {
  const char* text = shm_strerror(static_cast<int>(code));
  return text ? text : "unknown reason";
}

Drop dropByCode(uint32_t code) {
  if (code == SHM_EFULL) return {kFull, "dropped: its table is full"};
  if (code == SHM_EEXIST) return {kDuplicate, "dropped: it is there already"};
  return {kDropped, "dropped: " + codeText(code)};
}

// Why a row did not come into its table.
Drop dropOf(const tools::ConfigKeyword& keyword, const std::vector<Word>& words, uint32_t code) {
  const size_t needed = columnsOf(keyword, words).size();
  if (keyword.name == "SELEC_ACCEL_V6" && shm->config.ipv6Support != SHM_ON) {
    return {kDropped, "dropped: this appliance has no IPv6 support (ipv6Support)"};
  }
  if (words.size() < needed) {
    return {kDropped, "dropped: " + std::to_string(words.size()) + " of " + std::to_string(needed) + " columns"};
  }
  if (code != SHM_OK) return dropByCode(code);
  return {kDropped, "dropped: " + quotedValue(words[needed - 1].text) + " is none of 1, 2 and 3"};
}

const char* savedNameOf(Trial& trial, const Place& place) {
  for (const tools::ConfigKeyword& keyword : tools::configKeywords()) {
    if (keyword.saved && !hasTable(keyword.name) && trial.placeOf(keyword) == place) return keyword.name.data();
  }
  return nullptr;
}

// Of a value that is split into methods, all but one.
std::string without(const std::vector<Word>& methods, size_t left) {
  std::string value;
  for (size_t i = 0; i < methods.size(); ++i) {
    if (i != left) value += (value.empty() ? "" : ",") + std::string(methods[i].text);
  }
  return value;
}

std::vector<Word> methodsIn(const Word& value) {
  std::string text(value.text);
  std::ranges::replace_if(
      text, [](char c) { return strchr(kMethodSeparators, c) != nullptr; }, ' ');
  std::vector<Word> methods = wordsOf({text, value.column});
  for (Word& method : methods) method.text = value.text.substr(method.column - value.column, method.text.size());
  return methods;
}

}  // namespace

std::vector<Finding> Linter::run(std::string_view text) {
  while (!text.empty() && findings_.size() < kMostFindings) {
    const size_t end = std::min(text.find('\n'), text.size());
    ++number_;
    look(Line(text.substr(0, end)));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  auto place = [](const Finding& finding) { return std::pair(finding.line, finding.column); };
  std::ranges::stable_sort(findings_, {}, place);
  if (!text.empty()) findings_.push_back({number_ + 1, 1, kEnd, "too many findings: from here on not looked at"});
  return std::move(findings_);
}

void Linter::look(const Line& given) {
  Line line = given;
  if (line.keyword.text.empty()) return;
  line.known = tools::findConfigKeyword(line.keyword.text);
  if (!line.known) return note(line.keyword, kUnknown, unknownText(line.keyword.text));
  if (line.unread != 0) {
    const char* text = line.zero ? "a zero byte ends the line" : "not read: a line has 510 characters at most";
    note({{}, line.unread}, kCut, text);
  }
  if (saved_ && !line.known->saved) lookAtSaving(line);
  hasTable(line.known->name) ? lookAtRow(line) : lookAtField(line);
}

void Linter::lookAtSaving(const Line& line) {
  const std::string name(line.known->name);
  const char* other = savedNameOf(trial_, trial_.placeOf(*line.known));
  note(line.keyword, kUnsaved, other ? name + " is saved as " + other : name + " is never saved: a save leaves it out");
}

void Linter::lookAtRow(const Line& line) {
  const uint32_t code = trial_.read(line.whole);
  const Columns stored = tables_.added(line.known->name);
  if (!stored.empty()) return lookAtColumns(line, stored);
  const Drop drop = dropOf(*line.known, wordsOf(line.value), code);
  note(line.keyword, drop.kind, drop.text);
}

void Linter::lookAtColumns(const Line& line, const Columns& stored) {
  const std::vector<Word> words = wordsOf(line.value);
  lookAtFamily(line);
  lookForSameRow(line, stored);
  for (size_t i = 0; i < stored.size() && i < words.size(); ++i) {
    if (sameColumn(words[i].text, stored[i])) continue;
    note(words[i], kChanged, quotedValue(words[i].text) + " is stored as " + tools::escaped(stored[i]));
  }
  if (words.size() > stored.size()) note(words[stored.size()], kCut, "not read: the row is complete before it");
}

// A rule for any family becomes one for IPv4.
void Linter::lookAtFamily(const Line& line) {
  if (line.known->name != "SELEC_ACCEL_ANY" || shm->config.ipv6Support == SHM_ON) return;
  note(line.keyword, kChanged, "stored as a rule for IPv4: this appliance has no IPv6 support (ipv6Support)");
}

// Some tables take a row twice. A user is the name alone.
void Linter::lookForSameRow(const Line& line, const Columns& stored) {
  std::string row(line.known->name);
  for (const std::string& column : stored) {
    row += " " + column;
    if (line.known->name == "USER_ACCOUNT") break;
  }
  const auto [former, first] = rows_.try_emplace(row, number_);
  if (!first) note(line.keyword, kDuplicate, "the same as in line " + std::to_string(former->second));
}

void Linter::lookAtField(const Line& line) {
  const Place place = trial_.placeOf(*line.known);
  const std::string before = Trial::bytesAt(place);
  const bool address = line.known->form == tools::ConfigForm::kAddress;
  if (address) Trial::putBytes(place, std::string(place.width, '\0'));
  const uint32_t code = trial_.read(line.whole);
  const std::optional<Fault> fault = fieldFault(*line.known, line.value.text, Trial::bytesAt(place));
  if (fault) note({{}, line.value.column + fault->offset}, fault->kind, fault->text);
  if (fault && fault->kind == kDropped) return Trial::putBytes(place, before);
  if (address && code != SHM_OK) {
    note(line.keyword, dropByCode(code).kind, "the management address that it completes is " + dropByCode(code).text);
  }
  if (line.known->name == "DDUP") lookAtMethods(line, place);
  lookForFormer(line, place);
}

// A method without which the line would do the same has no meaning in it.
void Linter::lookAtMethods(const Line& line, const Place& place) {
  const std::vector<Word> methods = methodsIn(line.value);
  const std::string whole = Trial::bytesAt(place);
  for (size_t i = 0; i < methods.size() && methods[0].text != "NULL"; ++i) {
    trial_.read("DDUP " + without(methods, i));
    if (Trial::bytesAt(place) == whole)
      note(methods[i], kDropped, quotedValue(methods[i].text) + " changes nothing here");
  }
  Trial::putBytes(place, whole);
}

// The last line wins; keywords that set the same field are one.
void Linter::lookForFormer(const Line& line, const Place& place) {
  const auto [former, first] = said_.try_emplace(place, Said{line.known->name, number_});
  if (first) return;
  const std::string where = "line " + std::to_string(former->second.line);
  const std::string name(former->second.keyword);
  note(line.keyword, kDuplicate,
       former->second.keyword == line.known->name ? "said in " + where + " already: this line wins"
                                                  : "sets what " + name + " in " + where + " sets: this line wins");
  former->second = {line.known->name, number_};
}

void Linter::note(const Word& place, const char* kind, const std::string& text) {
  findings_.push_back({number_, place.column, kind, text});
}

}  // namespace ctl::lint
