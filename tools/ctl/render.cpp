// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/render.h"

#include <algorithm>

#include "tools/common/plain_text.h"
#include "tools/ctl/output/cells.h"
#include "tools/ctl/output/table.h"
#include "tools/ctl/output/width.h"

namespace ctl {
namespace {

constexpr size_t kLeastTable = 60;
constexpr size_t kLeastValue = 12;  // beside its name; a narrower one stands below it

std::string indented(const std::string& text, size_t indent) {
  std::string out;
  for (size_t start = 0; start < text.size();) {
    const size_t end = text.find('\n', start);
    if (end > start) out += std::string(indent, ' ');
    out += text.substr(start, end + 1 - start);
    start = end + 1;
  }
  return out;
}

size_t inside(size_t columns, size_t indent) {
  return columns == 0 ? 0 : std::max<size_t>(columns - std::min(columns, indent), 1);
}

// Where the first line of a text ends that is wider than the columns: at a blank; a longer word stays whole.
size_t breakOf(const std::string& text, size_t columns) {
  size_t end = std::string::npos;
  for (size_t blank = text.find(' '); blank != std::string::npos; blank = text.find(' ', blank + 1)) {
    if (end != std::string::npos && displayWidth(text.substr(0, blank)) > columns) break;
    end = blank;
  }
  return end;
}

// Lines behind the first begin below it.
std::string folded(std::string text, size_t columns) {
  std::string out;
  while (columns != 0 && displayWidth(text) > columns) {
    const size_t end = breakOf(text, columns);
    if (end == std::string::npos) break;
    out += text.substr(0, end) + "\n";
    text.erase(0, end + 1);
  }
  return out + text + "\n";
}

// A value beside its name, or below it where there is no room.
std::string line(const std::string& name, const Json& value, size_t width, size_t columns) {
  if (columns != 0 && columns < width + kLeastValue)
    return name + "\n" + indented(folded(cellText(value), inside(columns, 2)), 2);
  const std::string text = indented(folded(cellText(value), inside(columns, width)), width);
  return padded(name, width) + (text[0] == '\n' ? text : text.substr(width));
}

std::string block(const Json& value, size_t columns);

std::string objectText(const Json& object, size_t columns) {
  size_t width = 0;
  for (const auto& [name, value] : object.items()) {
    if (!isNested(value)) width = std::max(width, displayWidth(tools::escaped(name)) + 2);
  }
  std::string text;
  for (const auto& [key, value] : object.items()) {
    const std::string name = tools::escaped(key);
    text += isNested(value) ? name + ":\n" + indented(block(value, inside(columns, 2)), 2)
                            : line(name, value, width, columns);
  }
  return text;
}

std::string recordsText(const Json& table, size_t columns) {
  std::string text;
  for (const Json& row : table) text += (text.empty() ? "" : "\n") + objectText(row, columns);
  return text;
}

std::string block(const Json& value, size_t columns) {
  if (value.is_object()) return objectText(value, columns);
  if (!isTable(value)) return folded(cellText(value), columns);
  const bool narrow = columns != 0 && columns < kLeastTable;
  const std::optional<std::string> table = narrow ? std::nullopt : tableText(value, columns);
  return table ? *table : recordsText(value, columns);
}

}  // namespace

std::string render(const Json& value, size_t columns) { return block(value, columns); }

}  // namespace ctl
