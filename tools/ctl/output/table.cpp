// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/output/table.h"

#include <algorithm>
#include <vector>

#include "tools/common/plain_text.h"
#include "tools/ctl/output/cells.h"
#include "tools/ctl/output/screen.h"
#include "tools/ctl/output/width.h"

namespace ctl {
namespace {

constexpr size_t kLeastHeading = 4;
constexpr size_t kLeastText = 8;

struct Column {
  std::string heading;
  std::vector<std::string> cells;
  size_t width = 0;
  size_t widest = 0;   // of the cells
  bool texts = false;  // which may be cut
};

bool mayBeCut(const Json& value) { return value.is_string() || value.is_array(); }

Column columnOf(const Json& table, const std::string& name) {
  Column column;
  column.heading = tools::escaped(name);
  for (const Json& row : table) {
    const auto value = row.find(name);
    column.cells.push_back(value == row.end() ? "" : cellText(*value));
    column.widest = std::max(column.widest, displayWidth(column.cells.back()));
    column.texts = column.texts || (value != row.end() && mayBeCut(*value));
  }
  column.width = std::max(column.widest, displayWidth(column.heading));
  return column;
}

class Layout {
 public:
  Layout(const Json& table, size_t limit) : limit_(limit) {
    for (const std::string& name : columnNames(table)) columns_.push_back(columnOf(table, name));
  }

  // False when it cannot be made to fit.
  bool fit() {
    if (!tooWide()) return true;
    gap_ = 1;
    narrow([](const Column& column) {
      return std::max(column.widest, std::min(kLeastHeading, displayWidth(column.heading)));
    });
    narrow([](const Column& column) { return column.texts ? kLeastText : column.width; });
    return !tooWide();
  }

  std::string text() const {
    std::string text = line([](const Column& column) -> const std::string& { return column.heading; }, "");
    for (size_t row = 0; row < columns_.front().cells.size(); ++row) {
      text += line([row](const Column& column) -> const std::string& { return column.cells[row]; }, cutMark());
    }
    return text;
  }

 private:
  bool tooWide() const {
    size_t total = (columns_.size() - 1) * gap_;
    for (const Column& column : columns_) total += column.width;
    return limit_ != 0 && total > limit_;
  }

  // A column at a time, until all fit or none is wider than its least width.
  template <typename Least>
  void narrow(Least leastOf) {
    while (tooWide()) {
      Column* widest = nullptr;
      for (Column& column : columns_) {
        if (column.width > leastOf(column) && (!widest || column.width >= widest->width)) widest = &column;
      }
      if (!widest) return;
      --widest->width;
    }
  }

  template <typename TextOf>
  std::string line(TextOf textOf, const char* mark) const {
    std::string line;
    for (const Column& column : columns_) {
      line += padded(shortened(textOf(column), column.width, mark), column.width + gap_);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
  }

  std::vector<Column> columns_;
  size_t limit_;
  size_t gap_ = 2;
};

}  // namespace

std::optional<std::string> tableText(const Json& table, size_t columns) {
  Layout layout(table, columns);
  if (!layout.fit()) return std::nullopt;
  return layout.text();
}

}  // namespace ctl
