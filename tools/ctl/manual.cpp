// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/manual.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <stdexcept>

#include "manual_template.h"
#include "tools/common/config_lint.h"
#include "tools/ctl/exit_codes.h"
#include "tools/ctl/reference.h"

namespace ctl {
namespace {

// What scdoc would take for marks.
std::string plain(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c == '*' || c == '_' || c == '\\' || c == '<' || c == '~') out += '\\';
    out += c;
  }
  return out;
}

std::string entry(const std::string& term, const std::string& text) {
  return term + "\n\t" + plain(text) + (text.ends_with('.') ? "" : ".") + "\n\n";
}

std::string termOf(const Value& value) {
  const std::string type = plain(typeText(value.type));
  if (!value.isOption()) return "_" + plain(value.name) + "_";
  return "*" + plain(value.name) + "*" + (type.empty() ? "" : " _" + type + "_");
}

std::string meaningOf(const Value& value) {
  const std::string help = value.help;
  return value.preset.empty() ? help : help + "; " + value.preset + " when absent";
}

std::string optionsText() {
  std::string text;
  for (const Argument<Session>& option : sharedOptions()) text += entry(termOf(option), meaningOf(option));
  return text;
}

std::string syntaxTerm(const Command& row) {
  std::string text = "*" + plain(joined(row.words, " ")) + "*";
  bool options = false;
  for (const Value& value : row.values) {
    options = options || value.isOption();
    if (value.isOption()) continue;
    const std::string word = "_" + plain(value.name) + "_" + (value.several ? "..." : "");
    text += value.needed ? " " + word : " [" + word + "]";
  }
  return options ? text + " [_OPTION_...]" : text;
}

std::string familyText(const std::vector<const Command*>& rows) {
  std::string text = "## " + rows.front()->words.front() + "\n\n";
  if (!rows.front()->run) text += plain(rows.front()->help) + ".\n\n";
  for (const Command* row : rows) {
    if (row->run) text += entry(syntaxTerm(*row), row->help);
  }
  const std::vector<SharedValue> values = sharedValues(rows);
  if (!values.empty()) text += "With these:\n\n";
  for (const SharedValue& one : values) text += entry(termOf(*one.value), meaningOf(*one.value));
  return text;
}

std::string commandsText(const std::vector<Command>& rows) {
  std::string text;
  for (const std::vector<const Command*>& family : families(rows)) text += familyText(family);
  return text;
}

std::string exitText() {
  std::string text;
  for (const ExitCode& code : exitCodes()) {
    text += entry("*" + std::to_string(code.exit) + "*", code.meaning);
  }
  return text + plain(kExitOfExplain) + "\n";
}

void fill(std::string& page, const std::string& mark, const std::string& text) {
  const size_t at = page.find(mark);
  if (at == std::string::npos) throw std::runtime_error(mark + " is not in the page");
  page.replace(at, mark.size(), text);
}

bool inWord(const std::string& line, size_t at) {
  return at > 0 && at + 1 < line.size() && isalnum(static_cast<unsigned char>(line[at - 1])) &&
         isalnum(static_cast<unsigned char>(line[at + 1]));
}

// A line without its marks: what is bold or underlined there is plain here.
std::string unmarked(const std::string& line) {
  if (line.starts_with("# ")) return line.substr(2);
  if (line.starts_with("## ")) return "  " + line.substr(3);
  std::string text = line.starts_with('\t') ? std::string(12, ' ') : line.empty() ? "" : std::string(6, ' ');
  for (size_t i = line.starts_with('\t'); i < line.size(); ++i) {
    if (line[i] == '\\' && i + 1 < line.size()) {
      text += line[++i];
    } else if (line[i] != '*' && (line[i] != '_' || inWord(line, i))) {
      text += line[i];
    }
  }
  return text;
}

const char* formText(tools::ConfigForm form) {
  switch (form) {
    case tools::ConfigForm::kNumber: return "number";
    case tools::ConfigForm::kSwitch: return "switch";
    case tools::ConfigForm::kText: return "text";
    case tools::ConfigForm::kAddress: return "address";
    case tools::ConfigForm::kRow: return "row";
  }
  return "";
}

// The cells of the document's row: keyword, kind, meaning, line of a saved file.
std::vector<std::string> documentRow(const std::string& document, const std::string& keyword) {
  const size_t at = document.find("\n| " + keyword + " |");
  if (at == std::string::npos) throw std::runtime_error(keyword + " is not in the document");
  std::vector<std::string> cells;
  std::istringstream line(document.substr(at + 2, document.find('\n', at + 1) - at - 2));
  for (std::string cell; std::getline(line, cell, '|');) {
    const size_t start = cell.find_first_not_of(' ');
    cells.push_back(start == std::string::npos ? "" : cell.substr(start, cell.find_last_not_of(' ') + 1 - start));
  }
  if (cells.size() < 4) throw std::runtime_error(keyword + " has too few cells");
  std::erase(cells[2], '`');
  return cells;
}

}  // namespace

std::string manualPage(const std::vector<Command>& rows) {
  std::string page = kManualTemplate;
  fill(page, "@OPTIONS@\n", optionsText());
  fill(page, "@COMMANDS@\n", commandsText(rows));
  fill(page, "@EXIT@\n", exitText() + "\n");
  return page;
}

std::string manualText(const std::vector<Command>& rows) {
  std::istringstream page(manualPage(rows));
  std::string text;
  for (std::string line; std::getline(page, line);) text += unmarked(line) + "\n";
  return text;
}

std::string keywordPage(std::string page, const std::string& document) {
  std::string text;
  for (const tools::ConfigKeyword& keyword : tools::configKeywords()) {
    const std::vector<std::string> cells = documentRow(document, std::string(keyword.name));
    const std::string limit = keyword.limit == 0 ? "" : ", " + std::to_string(keyword.limit) + " characters";
    text += entry("*" + plain(std::string(keyword.name)) + "* (" + formText(keyword.form) + limit +
                      (cells[3].empty() ? ", not saved)" : ")"),
                  cells[2]);
  }
  fill(page, "@KEYWORDS@\n", text);
  return page;
}

}  // namespace ctl
