// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/render.h"

#include <algorithm>
#include <vector>

#include "tools/common/plain_text.h"

namespace ctl {
namespace {

std::string scalar(const Json& value) {
  if (value.is_string()) return tools::escaped(value.get<std::string>());
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (value.is_null()) return "-";
  return value.dump();
}

bool isTable(const Json& value) { return value.is_array() && !value.empty() && value.front().is_object(); }
bool isNested(const Json& value) { return value.is_object() || isTable(value); }

std::string padded(const std::string& text, size_t width) {
  return text.size() < width ? text + std::string(width - text.size(), ' ') : text;
}

std::string listText(const Json& list) {
  std::string line;
  for (const Json& element : list) line += (line.empty() ? "" : ", ") + scalar(element);
  return line.empty() ? "none" : line;
}

std::string inlineText(const Json& value) { return value.is_array() ? listText(value) : scalar(value); }

std::vector<std::string> columnsOf(const Json& table) {
  std::vector<std::string> columns;
  for (const Json& row : table) {
    for (const auto& [name, value] : row.items()) {
      if (std::find(columns.begin(), columns.end(), name) == columns.end()) columns.push_back(name);
    }
  }
  return columns;
}

std::string cell(const Json& row, const std::string& column) {
  auto value = row.find(column);
  return value == row.end() ? "" : inlineText(*value);
}

std::string tableText(const Json& table, const std::string& indent) {
  const std::vector<std::string> columns = columnsOf(table);
  std::vector<size_t> widths;
  for (const std::string& column : columns) {
    size_t width = column.size();
    for (const Json& row : table) width = std::max(width, cell(row, column).size());
    widths.push_back(width);
  }
  auto line = [&](auto textOf) {
    std::string text = indent;
    for (size_t i = 0; i < columns.size(); ++i) text += padded(textOf(columns[i]), widths[i] + 2);
    text.erase(text.find_last_not_of(' ') + 1);
    return text + "\n";
  };
  std::string text = line([](const std::string& column) { return column; });
  for (const Json& row : table) text += line([&](const std::string& column) { return cell(row, column); });
  return text;
}

std::string block(const Json& value, const std::string& indent);

std::string objectText(const Json& object, const std::string& indent) {
  size_t width = 0;
  for (const auto& [name, value] : object.items()) {
    if (!isNested(value)) width = std::max(width, name.size());
  }
  std::string text;
  for (const auto& [name, value] : object.items()) {
    text += isNested(value) ? indent + name + ":\n" + block(value, indent + "  ")
                            : indent + padded(name, width + 2) + inlineText(value) + "\n";
  }
  return text;
}

std::string block(const Json& value, const std::string& indent) {
  if (isTable(value)) return tableText(value, indent);
  if (value.is_object()) return objectText(value, indent);
  return indent + inlineText(value) + "\n";
}

}  // namespace

std::string render(const Json& value) { return block(value, ""); }

}  // namespace ctl
