// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/script/help_text.h"

#include <algorithm>

#include "tools/ctl/item_names.h"
#include "tools/ctl/place.h"
#include "tools/ctl/reference.h"
#include "tools/ctl/script/match.h"

namespace ctl {
namespace {

// Pairs of a word and its help, the helps below each other.
using Lines = std::vector<std::pair<std::string, std::string>>;

std::string aligned(const Lines& lines) {
  size_t width = 0;
  for (const auto& line : lines) width = std::max(width, line.first.size());
  std::string text;
  for (const auto& [word, help] : lines) {
    text += "  " + word + std::string(help.empty() ? 0 : width - word.size() + 2, ' ') + help + "\n";
  }
  return text;
}

std::string valueText(const Value& value) {
  const std::string type = typeText(value.type);
  if (!value.isOption()) return value.name + (type.empty() || type == "TEXT" ? "" : " (" + type + ")");
  return value.name + (type.empty() ? "" : " " + type);
}

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

void addItem(Lines& lines, const char* name, const std::string& text) {
  if (!text.empty()) lines.emplace_back(name, text);
}

std::string withUnit(const char* words, const char* unit) {
  const std::string text = words;
  return text.empty() || !*unit ? text : text + " (" + unit + ")";
}

std::string itemHelp(const ItemRow& row) {
  Lines lines;
  addItem(lines, "item", withUnit(row.name, row.unit));
  addItem(lines, "script", withUnit(row.script, *row.scriptUnit ? row.scriptUnit : row.unit));
  addItem(lines, "file", withUnit(row.keyword, row.unit));
  addItem(lines, "takes", *row.range ? std::string(row.range) : "read only");
  addItem(lines, "also", row.remark);
  return aligned(lines);
}

bool isNameOf(const std::string& word, const ItemRow& row) {
  const std::vector<std::string> script = wordsOf(row.script);
  return word == row.name || word == row.keyword || std::find(script.begin(), script.end(), word) != script.end();
}

bool hasWord(const Command& row, const std::string& word) {
  return std::find(row.words.begin(), row.words.end(), word) != row.words.end();
}

}  // namespace

std::string syntaxWithOptions(const Command& row) {
  std::string text = joined(row.words);
  for (const Value& value : row.values) {
    const std::string type = typeText(value.type);
    const std::string shown = value.isOption() && !type.empty() ? value.name + " " + type : value.name;
    text += value.needed ? " " + shown : " [" + shown + "]";
  }
  return text;
}

std::string scriptOptions(const Command& row) {
  Lines lines;
  for (const Value& value : row.values) {
    if (row.script && value.isOption()) lines.emplace_back(valueText(value), value.help);
  }
  return aligned(lines);
}

std::string whatMayFollow(const std::vector<std::string>& words) {
  const Place place = placeBehind(grammar(), matcher().withoutAliases(words));
  Lines lines;
  for (const Command* row : place.below) lines.emplace_back(row->words.back(), row->help);
  if (place.next) lines.emplace_back(valueText(*place.next), place.next->help);
  if (place.next) {
    for (const NamedNumber& word : place.next->type.words) lines.emplace_back("  " + std::string(word.name), "");
  }
  for (const Value* option : place.options) lines.emplace_back(valueText(*option), option->help);
  return aligned(lines);
}

std::string helpOfWord(const std::string& word) {
  std::string text;
  for (const ItemRow& row : itemRows()) {
    if (isNameOf(word, row)) text += (text.empty() ? "" : "\n") + itemHelp(row);
  }
  Lines lines;
  for (const Command& row : grammar()) {
    if (row.run && !row.hidden && hasWord(row, word)) lines.emplace_back(syntaxOf(row), row.help);
  }
  return text + (text.empty() || lines.empty() ? "" : "\n") + aligned(lines);
}

}  // namespace ctl
