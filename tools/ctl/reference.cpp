// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/reference.h"

#include <algorithm>

#include "tools/ctl/exit_codes.h"

namespace ctl {
namespace {

constexpr char kBegin[] = "<!-- The commands begin: printed by kestrovectl-reference -->\n";
constexpr char kEnd[] = "<!-- The commands end -->\n";

// A bar would end the cell.
std::string cell(std::string text) {
  for (size_t at = 0; (at = text.find('|', at)) != std::string::npos; at += 2) text.insert(at, "\\");
  return text;
}

std::string code(const std::string& text) { return text.empty() ? text : "`" + cell(text) + "`"; }

std::string line(const std::vector<std::string>& cells) { return "| " + joined(cells, " | ") + " |\n"; }

bool same(const Value& one, const Value& other) {
  return one.name == other.name && typeText(one.type) == typeText(other.type) &&
         std::string_view(one.help) == other.help;
}

void addValues(std::vector<SharedValue>& values, const Command& row) {
  for (const Value& value : row.values) {
    auto known = std::find_if(values.begin(), values.end(),
                              [&value](const SharedValue& one) { return same(*one.value, value); });
    if (known == values.end()) known = values.insert(values.end(), {&value, {}});
    known->commands.push_back("`" + row.words.back() + "`");
  }
}

std::string meaningOf(const Value& value) {
  return value.preset.empty() ? value.help : std::string(value.help) + "; `" + value.preset + "` when absent";
}

std::string takenBy(const Value& value) {
  const std::string type = typeText(value.type);
  return type.empty() ? "nothing" : code(type);
}

std::string valueTable(const std::vector<SharedValue>& values, bool single) {
  if (values.empty()) return {};
  std::string text = single ? "\n| Value | Takes | Meaning |\n|---|---|---|\n"
                            : "\n| Value | Takes | Meaning | Of |\n|---|---|---|---|\n";
  for (const SharedValue& one : values) {
    std::vector<std::string> cells = {code(one.value->name), takenBy(*one.value), cell(meaningOf(*one.value))};
    if (!single) cells.push_back(joined(one.commands, ", "));
    text += line(cells);
  }
  return text;
}

std::string commandTable(const std::vector<const Command*>& rows) {
  std::string text = "\n| Command | What it does |\n|---|---|\n";
  for (const Command* row : rows) {
    if (row->run) text += line({code(syntaxOf(*row)), cell(row->help)});
  }
  return text;
}

// What a first word has below it.
std::string section(const std::vector<const Command*>& rows) {
  const Command& first = *rows.front();
  const bool single = rows.size() == 1;
  std::string text =
      "\n### " + first.words.front() + "\n\n" + (single ? code(syntaxOf(first)) + ": " : "") + first.help;
  text += single ? ".\n" : ".\n" + commandTable(rows);
  return text + valueTable(sharedValues(rows), single);
}

std::string exitTable() {
  std::string text = "\n### Exit status\n\n| Exit | Meaning |\n|---|---|\n";
  for (const ExitCode& code : exitCodes()) text += line({std::to_string(code.exit), cell(code.meaning)});
  return text + "\n" + kExitOfExplain + "\n";
}

std::string sharedTable() {
  std::string text = "With every command, before or behind its words:\n\n| Option | Takes | Meaning |\n|---|---|---|\n";
  for (const Argument<Session>& option : sharedOptions()) {
    text += line({code(option.name), takenBy(option), cell(meaningOf(option))});
  }
  return text;
}

}  // namespace

std::string joined(const std::vector<std::string>& words, const char* between) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

std::vector<SharedValue> sharedValues(const std::vector<const Command*>& rows) {
  std::vector<SharedValue> values;
  for (const Command* row : rows) addValues(values, *row);
  return values;
}

std::vector<std::vector<const Command*>> families(const std::vector<Command>& rows) {
  std::vector<std::vector<const Command*>> all;
  for (const Command& row : rows) {
    if (row.hidden) continue;
    if (all.empty() || all.back().front()->words.front() != row.words.front()) all.emplace_back();
    all.back().push_back(&row);
  }
  return all;
}

std::string syntaxOf(const Command& row) {
  std::string text = joined(row.words, " ");
  bool options = false;
  for (const Value& value : row.values) {
    options = options || value.isOption();
    if (value.isOption()) continue;
    const std::string word = value.name + (value.several ? "..." : "");
    text += value.needed ? " " + word : " [" + word + "]";
  }
  return options ? text + " [OPTION...]" : text;
}

std::string reference(const std::vector<Command>& rows) {
  std::string text = std::string(kBegin) + "## Commands\n\n" + sharedTable() + exitTable();
  for (const std::vector<const Command*>& family : families(rows)) text += section(family);
  return text + kEnd;
}

}  // namespace ctl
